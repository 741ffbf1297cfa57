// Raw samples, counted by the colour of their sites.

export const bins = 256;

// red, green, blue: of the four sites of a cell, row by row; grey counts as green.
function coloursOf(sites) {
    const cells = { RG: [0, 1, 1, 2], GR: [1, 0, 2, 1], GB: [1, 2, 0, 1], BG: [2, 1, 1, 0] };
    return cells[sites] ?? [1, 1, 1, 1];
}

/** The colour of a site: 0 red, 1 green, 2 blue; -1 in grey frames. */
export function colourAt(format, x, y) {
    return format.sites === '' ? -1 : coloursOf(format.sites)[2 * (y & 1) + (x & 1)];
}

/** Histograms and sums by colour, least and most, in all bits that the samples have. */
export function countSamples(samples, width, format) {
    const whole = new Uint32Array(3 * 65536);
    const colours = coloursOf(format.sites);
    for (let start = 0, y = 0; start < samples.length; start += width, y++) {
        const even = 65536 * colours[2 * (y & 1)];
        const odd = 65536 * colours[2 * (y & 1) + 1];
        for (let x = 0; x < width; x += 2) {
            whole[even + samples[start + x]]++;
        }
        for (let x = 1; x < width; x += 2) {
            whole[odd + samples[start + x]]++;
        }
    }
    return summed(whole, format);
}

function summed(whole, format) {
    let least = 65535;
    let most = 0;
    const sums = [0, 0, 0];
    const totals = [0, 0, 0];
    whole.forEach((count, i) => {
        if (count > 0) {
            const sample = i & 65535;
            const colour = i >> 16;
            least = Math.min(least, sample);
            most = Math.max(most, sample);
            sums[colour] += count * sample;
            totals[colour] += count;
        }
    });
    const bits = format.inWords ? significantBits(most, 16) : format.bits;
    const histograms = [0, 1, 2].map((colour) => {
        const histogram = new Uint32Array(bins);
        for (let sample = least; sample <= most; sample++) {
            histogram[Math.floor((sample * bins) / 2 ** bits)] += whole[65536 * colour + sample];
        }
        return histogram;
    });
    return { least, most, bits, histograms, means: sums.map((sum, i) => (totals[i] > 0 ? sum / totals[i] : 0)) };
}

/** How many bits a sample has, 8 at least. */
export function significantBits(most, limit) {
    return Math.min(limit, Math.max(8, 32 - Math.clz32(most)));
}
