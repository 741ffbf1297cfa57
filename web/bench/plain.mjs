// Bilinear and edge-directed demosaicing of a BayerRG8 frame to RGB8 as one writes them in JavaScript: loops over
// typed arrays, the formulas written out for each kind of site, borders apart. Even sizes.

// A coordinate mirrored about the first and the last of n.
const mirrored = (at, n) => (at < 0 ? -at : at >= n ? 2 * (n - 1) - at : at);

function borderColumns(width, y, height) {
    return y === 0 || y === height - 1 ? Array.from({ length: width }, (_, x) => x) : [0, width - 1];
}

export function bilinear(samples, width, height, pixels) {
    for (let y = 1; y < height - 1; y++) {
        const own = (y & 1) === 0 ? 0 : 2; // the channel of the row's colour
        const other = 2 - own;
        const end = (y + 1) * width - 1;
        for (let i = y * width + 1 + (y & 1), o = 3 * i; i < end; i += 2, o += 6) {
            pixels[o + own] = (samples[i - 1] + samples[i + 1]) >> 1;
            pixels[o + 1] = samples[i];
            pixels[o + other] = (samples[i - width] + samples[i + width]) >> 1;
        }
        for (let i = y * width + 2 - (y & 1), o = 3 * i; i < end; i += 2, o += 6) {
            pixels[o + own] = samples[i];
            pixels[o + 1] = (samples[i - 1] + samples[i + 1] + samples[i - width] + samples[i + width]) >> 2;
            pixels[o + other] =
                (samples[i - width - 1] + samples[i - width + 1] + samples[i + width - 1] + samples[i + width + 1]) >>
                2;
        }
    }
    const at = (y, x) => samples[mirrored(y, height) * width + mirrored(x, width)];
    for (let y = 0; y < height; y++) {
        for (const x of borderColumns(width, y, height)) {
            const beside = (at(y, x - 1) + at(y, x + 1)) >> 1;
            const above = (at(y - 1, x) + at(y + 1, x)) >> 1;
            const across = (at(y - 1, x - 1) + at(y - 1, x + 1) + at(y + 1, x - 1) + at(y + 1, x + 1)) >> 2;
            const cross = (at(y, x - 1) + at(y, x + 1) + at(y - 1, x) + at(y + 1, x)) >> 2;
            put(pixels, 3 * (y * width + x), y, x, at(y, x), { beside, above, across, green: cross });
        }
    }
    return pixels;
}

function put(pixels, o, y, x, own, { beside, above, across, green }) {
    const redRow = (y & 1) === 0;
    const isGreen = ((x ^ y) & 1) === 1;
    pixels[o] = isGreen ? (redRow ? beside : above) : redRow ? own : across;
    pixels[o + 1] = isGreen ? own : green;
    pixels[o + 2] = isGreen ? (redRow ? above : beside) : redRow ? across : own;
}

const clamped = (value) => (value < 0 ? 0 : value > 255 ? 255 : value);

// The greens of a frame: along the direction of the smaller gradient.
function greensOf(samples, width, height, greens) {
    greens.set(samples);
    for (let y = 2; y < height - 2; y++) {
        for (let x = 2 + (y & 1); x < width - 2; x += 2) {
            const i = y * width + x;
            const left = samples[i - 1],
                right = samples[i + 1],
                up = samples[i - width],
                down = samples[i + width];
            const secondH = 2 * samples[i] - samples[i - 2] - samples[i + 2];
            const secondV = 2 * samples[i] - samples[i - 2 * width] - samples[i + 2 * width];
            const gradientH = Math.abs(secondH) + Math.abs(left - right);
            const gradientV = Math.abs(secondV) + Math.abs(up - down);
            greens[i] = clamped(
                gradientH < gradientV ? ((left + right) >> 1) + (secondH >> 2) : ((up + down) >> 1) + (secondV >> 2),
            );
        }
    }
    for (let y = 0; y < height; y++) {
        const inner = y >= 2 && y < height - 2;
        for (let x = y & 1; x < width; x += inner && x < 2 ? Math.max(2, width - 4 - x + ((width - 4 - x) % 2)) : 2) {
            greens[y * width + x] = borderGreen(samples, width, height, y, x);
        }
    }
}

function borderGreen(samples, width, height, y, x) {
    const at = (dy, dx) => samples[mirrored(y + dy, height) * width + mirrored(x + dx, width)];
    const secondH = 2 * at(0, 0) - at(0, -2) - at(0, 2);
    const secondV = 2 * at(0, 0) - at(-2, 0) - at(2, 0);
    const gradientH = Math.abs(secondH) + Math.abs(at(0, -1) - at(0, 1));
    const gradientV = Math.abs(secondV) + Math.abs(at(-1, 0) - at(1, 0));
    return clamped(
        gradientH < gradientV
            ? ((at(0, -1) + at(0, 1)) >> 1) + (secondH >> 2)
            : ((at(-1, 0) + at(1, 0)) >> 1) + (secondV >> 2),
    );
}

let kept = new Uint8Array(0);

export function edge(samples, width, height, pixels) {
    kept = kept.length >= samples.length ? kept : new Uint8Array(samples.length);
    const greens = kept.subarray(0, samples.length);
    greensOf(samples, width, height, greens);
    for (let y = 1; y < height - 1; y++) {
        const own = (y & 1) === 0 ? 0 : 2;
        const other = 2 - own;
        const end = (y + 1) * width - 1;
        for (let i = y * width + 1 + (y & 1), o = 3 * i; i < end; i += 2, o += 6) {
            const green = greens[i],
                a = i - width,
                b = i + width;
            pixels[o + own] = clamped(
                green + ((samples[i - 1] - greens[i - 1] + samples[i + 1] - greens[i + 1]) >> 1),
            );
            pixels[o + 1] = green;
            pixels[o + other] = clamped(green + ((samples[a] - greens[a] + samples[b] - greens[b]) >> 1));
        }
        for (let i = y * width + 2 - (y & 1), o = 3 * i; i < end; i += 2, o += 6) {
            const green = greens[i],
                a = i - width,
                b = i + width;
            pixels[o + own] = samples[i];
            pixels[o + 1] = green;
            pixels[o + other] = clamped(
                green +
                    ((samples[a - 1] -
                        greens[a - 1] +
                        samples[a + 1] -
                        greens[a + 1] +
                        samples[b - 1] -
                        greens[b - 1] +
                        samples[b + 1] -
                        greens[b + 1]) >>
                        2),
            );
        }
    }
    edgeBorder(samples, greens, width, height, pixels);
    return pixels;
}

function edgeBorder(samples, greens, width, height, pixels) {
    for (let y = 0; y < height; y++) {
        for (const x of borderColumns(width, y, height)) {
            const difference = (dy, dx) => {
                const i = mirrored(y + dy, height) * width + mirrored(x + dx, width);
                return samples[i] - greens[i];
            };
            const i = y * width + x;
            const green = greens[i];
            const beside = clamped(green + ((difference(0, -1) + difference(0, 1)) >> 1));
            const above = clamped(green + ((difference(-1, 0) + difference(1, 0)) >> 1));
            const across = clamped(
                green + ((difference(-1, -1) + difference(-1, 1) + difference(1, -1) + difference(1, 1)) >> 2),
            );
            put(pixels, 3 * i, y, x, samples[i], { beside, above, across, green });
        }
    }
}
