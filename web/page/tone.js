// Balance and curve for looking, as kro convert --wb and --gamma make them.

function gainsFor({ balance, red, blue }, { means }) {
    if (balance === 'gray') {
        return [0, 1, 2].map((colour) => (means[colour] > 0 ? means[1] / means[colour] : 1));
    }
    return balance === 'hand' ? [red, 1, blue] : [1, 1, 1];
}

function tableOf(gain, gamma) {
    return Uint8Array.from({ length: 256 }, (_, i) => Math.round(255 * Math.min(1, (i / 255) * gain) ** (1 / gamma)));
}

/** A table of bytes for each colour. */
export function tablesFor(look, counts) {
    const gains = gainsFor(look, counts);
    return { gains, tables: gains.map((gain) => tableOf(gain, look.gamma)) };
}

/** RGBA pixels by the tables; the same pixels where these change nothing. */
export function applied({ tables: [red, green, blue] }, pixels) {
    if ([red, green, blue].every((table) => table.every((value, i) => value === i))) {
        return pixels;
    }
    const toned = new Uint8ClampedArray(pixels.length);
    for (let i = 0; i < pixels.length; i += 4) {
        toned[i] = red[pixels[i]];
        toned[i + 1] = green[pixels[i + 1]];
        toned[i + 2] = blue[pixels[i + 2]];
        toned[i + 3] = 255;
    }
    return toned;
}
