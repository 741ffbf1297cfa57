// Raw camera frames to pictures, by the library kro compiled to WebAssembly. README.md shows its use; kro.d.ts
// describes each option.

const algorithms = Object.freeze(['nearest', 'bilinear', 'edge', 'fine']);

// As in kro/view.h: flags, status codes, and the records of a call, in words.
const flags = { alpha: 1, bigEndian: 2, leftAligned: 4, fullRange: 8 };
const statusTexts = {
    [-102]: 'the format is none of frames',
    [-104]: 'width or height is too small, or the frame is larger than memory',
    [-107]: 'the output format is none of pictures',
    [-120]: 'a stride is shorter than a row',
    [-121]: 'an option is out of range or does not fit the format',
    [-122]: '16-bit samples with an odd stride',
};
const recordWords = { source: 5, picture: 9, options: 7 };
const recordBytes = 4 * (recordWords.source + recordWords.picture + recordWords.options);

const leastSide = 4;
const mostSamples = 2 ** 30;
const optionNames = new Set([
    'format',
    'width',
    'height',
    'algorithm',
    'output',
    'stride',
    'outputStride',
    'bits',
    'bigEndian',
    'leftAligned',
    'fullRange',
    'alpha',
    'firstRow',
    'rowCount',
    'into',
    'borrow',
]);

// ---- what came and what was expected ----

function shown(value) {
    if (typeof value === 'string') {
        return `'${value.length > 40 ? `${value.slice(0, 40)}…` : value}'`;
    }
    if (typeof value === 'function' || (typeof value === 'object' && value !== null)) {
        return `a ${Object.prototype.toString.call(value).slice(8, -1)}`;
    }
    return Object.is(value, -0) ? '-0' : typeof value === 'bigint' ? `${value}n` : String(value);
}

function wrongType(name, value, expected) {
    return new TypeError(`kro: ${name} is ${shown(value)}, expected ${expected}`);
}

function wrongValue(name, value, expected) {
    return new RangeError(`kro: ${name} is ${shown(value)}, expected ${expected}`);
}

function integer(name, value, least, most) {
    const expected = `a whole number from ${least} to ${most}`;
    if (typeof value !== 'number') {
        throw wrongType(name, value, expected);
    }
    if (!Number.isInteger(value) || value < least || value > most) {
        throw wrongValue(name, value, expected);
    }
    return value;
}

function flag(name, value) {
    if (typeof value !== 'boolean') {
        throw wrongType(name, value, 'true or false');
    }
    return value;
}

function oneOf(name, value, choices, hint) {
    if (typeof value !== 'string') {
        throw wrongType(name, value, hint);
    }
    if (!choices.includes(value)) {
        throw wrongValue(name, value, hint);
    }
    return value;
}

// The bytes of a buffer or of a view of one.
function bytesOf(name, value) {
    const isView = ArrayBuffer.isView(value);
    const buffer = isView ? value.buffer : value;
    const isBuffer =
        buffer instanceof ArrayBuffer ||
        (typeof SharedArrayBuffer !== 'undefined' && buffer instanceof SharedArrayBuffer);
    if (!isBuffer) {
        throw wrongType(name, value, 'an ArrayBuffer, or a typed array or DataView of one');
    }
    // Of a buffer that was handed to somebody else nothing can be asked but its length.
    if (buffer.byteLength === 0) {
        return new Uint8Array(0);
    }
    return isView ? new Uint8Array(buffer, value.byteOffset, value.byteLength) : new Uint8Array(buffer);
}

// ---- the module ----

// () => i8x16.popcnt(i8x16.splat(0)): what an engine without vectors does not accept.
const vectorProbe = new Uint8Array([
    0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 10, 1, 8, 0, 65, 0, 253, 15, 253, 98, 11,
]);

/** Whether this engine runs kro.wasm; it takes kro-scalar.wasm where not. */
export function hasVectors() {
    return WebAssembly.validate(vectorProbe);
}

async function moduleFrom(source) {
    if (source instanceof WebAssembly.Module) {
        return source;
    }
    if (ArrayBuffer.isView(source) || source instanceof ArrayBuffer) {
        return WebAssembly.compile(source);
    }
    const url = new URL(source);
    if (url.protocol === 'file:') {
        const { readFile } = await import(/* webpackIgnore: true */ /* @vite-ignore */ 'node:fs/promises');
        return WebAssembly.compile(await readFile(url));
    }
    const response = await fetch(url);
    if (!response.ok) {
        throw new Error(`kro: ${url} cannot be loaded: ${response.status} ${response.statusText}`);
    }
    return WebAssembly.compile(await response.arrayBuffer());
}

/**
 * Loads the module beside this file that the engine can run, or the one that is given.
 * @param {{wasm?: WebAssembly.Module | BufferSource | URL | string, vectors?: boolean}} [options]
 */
export async function load({ wasm, vectors = hasVectors() } = {}) {
    flag('vectors', vectors);
    const source =
        wasm ?? (vectors ? new URL('./kro.wasm', import.meta.url) : new URL('./kro-scalar.wasm', import.meta.url));
    return new Kro(await WebAssembly.instantiate(await moduleFrom(source)));
}

class Kro {
    #exports;
    #memory;
    #records; // view.h's records, then the frame, then the picture
    #frame;
    #byName = new Map();

    constructor(instance) {
        this.#exports = instance.exports;
        this.#memory = instance.exports.memory;
        this.#records = aligned(instance.exports.__heap_base.value);
        this.#frame = aligned(this.#records + recordBytes);
        this.instructionSet = this.#text(this.#exports.instructionSet());
        this.algorithms = algorithms;
        this.formats = Object.freeze(Array.from({ length: this.#exports.formatCount() }, (_, i) => this.#format(i)));
        this.frameFormats = Object.freeze(this.formats.filter((f) => f.isFrame).map((f) => f.name));
        this.pictureFormats = Object.freeze(this.formats.filter((f) => f.isPicture).map((f) => f.name));
        Object.freeze(this);
    }

    /** Turns the samples of a frame into a picture. */
    convert(bytes, options) {
        const samples = bytesOf('bytes', bytes);
        const call = this.#checked(options);
        if (samples.length < call.frameBytes) {
            const apart = call.stride === 0 ? '' : ` with a stride of ${call.stride}`;
            throw new RangeError(
                `kro: bytes has ${samples.length}, expected at least ${call.frameBytes} for a frame of ` +
                    `${call.width}x${call.height} ${call.format.name}${apart}`,
            );
        }
        const into = call.into === undefined ? undefined : this.#target(call);
        const frame = this.#place(samples, call);
        this.#run(frame, call);
        return this.#picture(call, into);
    }

    /** Makes room for such frames and gives the place in the module's memory where convert() takes them uncopied. */
    reserve(options) {
        const call = this.#checked(options);
        this.#grow(this.#pictureAt(call) + call.pictureBytes, call);
        return new Uint8Array(this.#memory.buffer, this.#frame, call.frameBytes);
    }

    /** Bytes of a row of `width` samples or pixels (of one plane): the smallest stride. */
    rowBytes(format, width) {
        const { code } = this.#known(
            'format',
            format,
            [...this.#byName.keys()],
            'the name of a format of frames or pictures',
        );
        return this.#exports.kroRowBytes(code, integer('width', width, 1, mostSamples / leastSide)) >>> 0;
    }

    /** Bytes that convert() needs for such a frame. */
    frameBytes(options) {
        return this.#checked(options).frameBytes;
    }

    #text(address) {
        const bytes = new Uint8Array(this.#memory.buffer);
        return String.fromCharCode(...bytes.subarray(address, bytes.indexOf(0, address)));
    }

    #format(index) {
        const [code, name, nameLength, bits, layout, ofWords, sites, planes] = new Int32Array(
            this.#memory.buffer,
            this.#exports.formatAt(index),
            8,
        );
        const format = Object.freeze({
            name: this.#text(name).slice(0, nameLength),
            code: code >>> 0,
            bits,
            isFrame: layout >= 0,
            layout,
            inWords: ofWords === 1,
            sites: this.#text(sites),
            isPicture: planes > 0,
            planes,
        });
        this.#byName.set(format.name, format);
        return format;
    }

    #known(name, value, choices, kind) {
        return this.#byName.get(oneOf(name, value, choices, kind));
    }

    // ---- one call ----

    #checked(options) {
        if (typeof options !== 'object' || options === null) {
            throw wrongType('options', options, 'an object with format, width and height');
        }
        for (const name of Object.keys(options)) {
            if (!optionNames.has(name)) {
                throw new TypeError(
                    `kro: there is no option ${shown(name)}, expected ${[...optionNames].join(', ')}`,
                );
            }
        }
        const { algorithm = 'edge', output = 'RGBa8', stride = 0, bits = 0, firstRow = 0 } = options;
        const call = { ...options, algorithm, output, stride, bits, firstRow };
        call.format = this.#known(
            'format',
            options.format,
            this.frameFormats,
            'the name of a format of frames, such as BayerRG8',
        );
        call.output = this.#known(
            'output',
            output,
            this.pictureFormats,
            'the name of a format of pictures, such as RGBa8',
        );
        oneOf('algorithm', algorithm, algorithms, algorithms.join(', '));
        this.#checkSize(call);
        this.#checkSamples(call);
        this.#checkPicture(call);
        return call;
    }

    #checkSize(call) {
        integer('width', call.width, leastSide, mostSamples / leastSide);
        integer('height', call.height, leastSide, mostSamples / leastSide);
        if (call.width * call.height > mostSamples) {
            throw new RangeError(
                `kro: width x height is ${call.width}x${call.height}, expected at most ${mostSamples} samples`,
            );
        }
        const row = this.rowBytes(call.format.name, call.width);
        const apart = Math.abs(integer('stride', call.stride, -mostSamples, mostSamples));
        if (apart !== 0 && apart < row) {
            throw wrongValue(
                'stride',
                call.stride,
                `0 or at least the ${row} bytes of a row of ${call.width} ${call.format.name}`,
            );
        }
        if (call.format.inWords && apart % 2 !== 0) {
            throw wrongValue('stride', call.stride, 'an even number, as samples are words');
        }
        // Without gaps groups of packed samples run on over the ends of rows.
        call.frameBytes =
            apart === 0
                ? this.#exports.kroRowBytes(call.format.code, call.width * call.height) >>> 0
                : apart * (call.height - 1) + row;
    }

    #checkSamples(call) {
        const { format } = call;
        integer('bits', call.bits, 0, 16);
        const fits = call.bits === 0 || call.bits === format.bits || (format.inWords && call.bits >= 8);
        if (!fits) {
            throw wrongValue(
                'bits',
                call.bits,
                format.inWords ? '0, or 8 to 16' : `0 or the ${format.bits} of ${format.name}`,
            );
        }
        for (const name of ['bigEndian', 'leftAligned', 'fullRange', 'borrow']) {
            call[name] = flag(name, call[name] ?? false);
        }
        for (const name of ['bigEndian', 'leftAligned']) {
            if (call[name] && !format.inWords) {
                throw wrongValue(name, true, `false, as samples of ${format.name} are no words`);
            }
        }
    }

    #checkPicture(call) {
        const { output } = call;
        integer('firstRow', call.firstRow, 0, call.height - 1);
        call.rowCount = integer(
            'rowCount',
            call.rowCount ?? call.height - call.firstRow,
            1,
            call.height - call.firstRow,
        );
        if (call.alpha !== undefined) {
            integer('alpha', call.alpha, 0, 2 ** output.bits - 1);
        }
        call.rowBytes = this.rowBytes(output.name, call.width);
        call.outputStride =
            integer('outputStride', call.outputStride ?? call.rowBytes, 0, mostSamples) || call.rowBytes;
        if (call.outputStride < call.rowBytes || call.outputStride % (output.bits / 8) !== 0) {
            throw wrongValue(
                'outputStride',
                call.outputStride,
                `0 or at least the ${call.rowBytes} bytes of a row of ${call.width} ${output.name}` +
                    `${output.bits === 16 ? ', an even number' : ''}`,
            );
        }
        if (call.borrow && (call.into !== undefined || call.outputStride !== call.rowBytes)) {
            throw wrongValue('borrow', true, 'false together with into or outputStride, which ask for a copy');
        }
        call.planeBytes = call.rowBytes * call.height;
        call.pictureBytes = call.planeBytes * output.planes;
    }

    #pictureAt(call) {
        return aligned(this.#frame + call.frameBytes);
    }

    #grow(bytes, call) {
        const pages = Math.ceil((bytes - this.#memory.buffer.byteLength) / 65536);
        if (pages <= 0) {
            return;
        }
        try {
            this.#memory.grow(pages);
        } catch (error) {
            throw new RangeError(
                `kro: no memory for a frame of ${call.width}x${call.height} ${call.format.name} and its ` +
                    `picture in ${call.output.name}, ${Math.ceil(bytes / 2 ** 20)} MiB together`,
                { cause: error },
            );
        }
    }

    // Where the samples are for the module: where they lie, if that is in its memory.
    #place(samples, call) {
        const end = this.#pictureAt(call) + call.pictureBytes;
        const inside = samples.buffer === this.#memory.buffer && samples.byteOffset === this.#frame;
        if (inside && end <= this.#memory.buffer.byteLength) {
            return this.#frame;
        }
        // A view of the module's own memory would be lost where that grows.
        const kept = samples.buffer === this.#memory.buffer ? samples.slice(0, call.frameBytes) : samples;
        this.#grow(end, call);
        new Uint8Array(this.#memory.buffer).set(kept.subarray(0, call.frameBytes), this.#frame);
        return this.#frame;
    }

    #run(frame, call) {
        const { format, output, stride, height, width } = call;
        const picture = this.#pictureAt(call);
        const first = stride < 0 ? frame - stride * (height - 1) : frame;
        const planes = [0, 1, 2, 3].map((i) => (i < output.planes ? picture + i * call.planeBytes : 0));
        let set = call.alpha === undefined ? 0 : flags.alpha;
        for (const name of ['bigEndian', 'leftAligned', 'fullRange']) {
            set |= call[name] ? flags[name] : 0;
        }
        const records = new Int32Array(this.#memory.buffer, this.#records, recordBytes / 4);
        records.set([first, stride, height, width, format.code]);
        records.set([...planes, 0, 0, 0, 0, output.code], recordWords.source);
        records.set(
            [
                4 * recordWords.options,
                algorithms.indexOf(call.algorithm),
                set,
                call.alpha ?? 0,
                call.bits,
                call.firstRow,
                call.rowCount,
            ],
            recordWords.source + recordWords.picture,
        );
        const at = this.#records;
        const status = this.#exports.kroConvertView(
            at,
            at + 4 * recordWords.source,
            at + 4 * (recordWords.source + recordWords.picture),
        );
        if (status !== 0) {
            throw new RangeError(`kro: ${statusTexts[status] ?? `status ${status}`}`);
        }
    }

    // ---- its picture ----

    #target(call) {
        const { into, output } = call;
        const bytes = bytesOf('into', into);
        const needed = outputBytes(call);
        if (bytes.length < needed) {
            throw new RangeError(
                `kro: into has ${bytes.length} bytes, expected at least ${needed} for ${call.rowCount} rows of ` +
                    `${call.width} ${output.name}${call.outputStride === call.rowBytes ? '' : ` ${call.outputStride} bytes apart`}`,
            );
        }
        if (bytes.byteOffset % (output.bits / 8) !== 0) {
            throw new RangeError(
                `kro: into begins at byte ${bytes.byteOffset} of its buffer, expected an even one for words`,
            );
        }
        if (bytes.buffer === this.#memory.buffer) {
            throw new RangeError("kro: into lies in the module's own memory, expected a buffer of yours");
        }
        return bytes;
    }

    #picture(call, into) {
        const { output, rowCount } = call;
        const plane = (i) =>
            new Uint8Array(
                this.#memory.buffer,
                this.#pictureAt(call) + i * call.planeBytes + call.firstRow * call.rowBytes,
                rowCount * call.rowBytes,
            );
        const planes = Array.from({ length: output.planes }, (_, i) => plane(i));
        if (call.borrow && rowCount === call.height) {
            return pictureOf(call, new Uint8Array(this.#memory.buffer, planes[0].byteOffset, call.pictureBytes));
        }
        const bytes = into ?? ownBytes(call);
        planes.forEach((pixels, i) => copyRows(pixels, bytes, i * rowCount * call.outputStride, call));
        return pictureOf(call, bytes.subarray(0, outputBytes(call)));
    }
}

const aligned = (address) => Math.ceil(address / 64) * 64;

function outputBytes({ output, rowCount, outputStride }) {
    return output.planes * rowCount * outputStride;
}

function ownBytes(call) {
    try {
        return new Uint8Array(outputBytes(call));
    } catch (error) {
        throw new RangeError(`kro: no memory for a picture of ${outputBytes(call)} bytes`, { cause: error });
    }
}

function copyRows(pixels, bytes, start, { rowBytes, outputStride, rowCount }) {
    if (rowBytes === outputStride) {
        bytes.set(pixels, start);
        return;
    }
    for (let row = 0; row < rowCount; row++) {
        bytes.set(pixels.subarray(row * rowBytes, (row + 1) * rowBytes), start + row * outputStride);
    }
}

function pictureOf({ output, width, rowCount, outputStride }, bytes) {
    const Samples = output.bits === 8 ? Uint8Array : Uint16Array;
    const data = new Samples(bytes.buffer, bytes.byteOffset, bytes.byteLength / Samples.BYTES_PER_ELEMENT);
    const planeLength = data.length / output.planes;
    const planes = Array.from({ length: output.planes }, (_, i) =>
        data.subarray(i * planeLength, (i + 1) * planeLength),
    );
    return { data, planes, width, height: rowCount, stride: outputStride, format: output.name };
}
