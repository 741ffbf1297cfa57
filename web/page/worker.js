// All work on bytes: what a file is, its pictures, how they are balanced for looking. One request after the other.
import { load } from './kro/kro.js';
import { guesser } from './guess.js';
import { countSamples, significantBits } from './samples.js';
import { applied, tablesFor } from './tone.js';

const ready = Promise.all([load(), guesser(new URL('./kro-guess.wasm', import.meta.url))]);
const mostGuessed = 2 ** 26; // bytes: what follows the first frames tells no more
const mostRounds = 8;
const mostMilliseconds = 200; // for each algorithm
const clockStep = 0.1;

let kro;
let guess;
let file = { name: '', bytes: new Uint8Array(0) };
let frame; // how it is read, its samples, and its picture by each algorithm

const named = (name) => kro.formats.find((format) => format.name === name);

const requests = {
    about() {
        const formats = kro.formats.filter((format) => format.isFrame);
        return { formats, algorithms: kro.algorithms, instructionSet: kro.instructionSet };
    },

    async open({ name, blob }) {
        const bytes = new Uint8Array(await blob.arrayBuffer());
        if (bytes.length === 0) {
            throw new Error(`${name} is empty, expected the bytes of a raw frame`);
        }
        const kind = await pictureKind(blob);
        if (kind) {
            throw new Error(`${name} is a picture already (${kind}), expected the bytes of a raw frame`);
        }
        file = { name, bytes };
        return { length: bytes.length, ...(await readings()) };
    },

    others() {
        return guess.byBytes(file.bytes.subarray(0, mostGuessed), file.bytes.length);
    },

    convert(reading) {
        const options = optionsOf(reading);
        const layout = layoutOf(reading, options);
        const format = named(reading.format);
        const place = kro.reserve({ ...options, output: 'RGBa16' }); // the largest that follows
        place.set(file.bytes.subarray(layout.start, layout.start + place.length));
        const samples = rawSamples(place, options, format);
        const counts = countSamples(samples, options.width, format);
        // Words of a format of 16 bits may have fewer, which no name tells.
        options.bits ||= format.inWords && format.bits === 16 ? significantBits(counts.most, 16) : 0;
        frame = { options, format, samples, counts, pictures: {} };
        const times = Object.fromEntries(kro.algorithms.map((algorithm) => [algorithm, picture(algorithm)]));
        const { width, height, bits } = options;
        return { times, counts, width, height, bits: bits || format.bits, frames: layout.frames, rest: layout.rest };
    },

    async look(wanted) {
        const tables = tablesFor(wanted, frame.counts);
        const bitmaps = {};
        for (const algorithm of kro.algorithms) {
            const pixels = applied(tables, frame.pictures[algorithm]);
            const image = new ImageData(pixels, frame.options.width, frame.options.height);
            bitmaps[algorithm] = await createImageBitmap(image, { colorSpaceConversion: 'none' });
        }
        return { bitmaps, gains: tables.gains };
    },

    pixel({ x, y }) {
        const at = y * frame.options.width + x;
        const values = kro.algorithms.map((algorithm) => [...frame.pictures[algorithm].subarray(4 * at, 4 * at + 3)]);
        return { x, y, sample: frame.samples[at], values };
    },
};

// A name may say size and format, and be wrong.
async function readings() {
    const said = await guess.byName(file.name, file.bytes.length);
    if (said && layoutOf(said, optionsOf(said), true).frames > 0) {
        return { by: 'name', answers: [said] };
    }
    return { by: 'bytes', said, answers: await requests.others() };
}

function optionsOf({ format, width, height, stride, bits, bigEndian }) {
    const inWords = named(format)?.inWords ?? false;
    return {
        format,
        width,
        height,
        stride: stride || 0,
        bits: inWords ? bits || 0 : 0,
        bigEndian: inWords && Boolean(bigEndian),
    };
}

// Where the frame begins in the file, and how many there are.
function layoutOf({ skip = 0, frame: number = 1 }, options, lenient = false) {
    const needed = kro.frameBytes(options);
    const apart = options.stride ? options.stride * options.height : needed;
    const there = file.bytes.length - skip;
    const frames = there < needed ? 0 : Math.floor((there - needed) / apart) + 1;
    const what = `${options.width}x${options.height} ${options.format}`;
    if (!lenient && frames === 0) {
        const before = skip === 0 ? '' : ` behind the first ${skip}`;
        throw new Error(
            `${file.name} has ${Math.max(0, there)} bytes${before}, expected at least ${needed} for ${what}`,
        );
    }
    if (!lenient && number > frames) {
        throw new Error(
            `${file.name} holds ${frames} of ${what}, expected a frame from 1 to ${frames}, not ${number}`,
        );
    }
    return { start: skip + (number - 1) * apart, frames, rest: Math.max(0, there - frames * apart) };
}

// The samples as numbers: the frame read as a grey one of the same layout.
function rawSamples(place, options, format) {
    const bits = format.inWords ? 16 : format.bits;
    const grey = kro.formats.find(
        (other) => other.isFrame && other.sites === '' && other.layout === format.layout && other.bits === bits,
    );
    return kro.convert(place, { ...options, format: grey.name, bits: 0, output: 'Mono16' }).data;
}

// Makes one picture, and says how long that takes at best: the engine improves the code while it runs, and its clock
// has steps of a tenth of a millisecond.
function picture(algorithm) {
    const place = kro.reserve({ ...frame.options, output: 'RGBa16' });
    const make = () => kro.convert(place, { ...frame.options, algorithm, output: 'RGBa8', borrow: true });
    const begin = performance.now();
    let made = make();
    let best = Math.max(clockStep, performance.now() - begin);
    for (let round = 0; round < mostRounds && performance.now() - begin < mostMilliseconds; round++) {
        const together = Math.ceil((10 * clockStep) / best);
        const start = performance.now();
        for (let i = 0; i < together; i++) {
            made = make();
        }
        best = Math.min(best, Math.max(clockStep, performance.now() - start) / together);
    }
    frame.pictures[algorithm] = new Uint8ClampedArray(made.data);
    return best;
}

// What a browser shows as a picture is no raw frame.
async function pictureKind(blob) {
    try {
        const bitmap = await createImageBitmap(blob);
        const text = `${bitmap.width}x${bitmap.height}`;
        bitmap.close();
        return text;
    } catch {
        return '';
    }
}

async function answer({ id, kind, request }) {
    try {
        [kro, guess] = await ready;
        const result = await requests[kind](request);
        postMessage({ id, result }, Object.values(result.bitmaps ?? {}));
    } catch (error) {
        postMessage({ id, error: error.message });
    }
}

let queue = Promise.resolve();
onmessage = ({ data }) => {
    queue = queue.then(() => answer(data));
};
