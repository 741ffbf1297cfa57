// The package from the outside: pictures of both modules, their shape, and what may be asked for.
import { strict as assert } from 'node:assert';
import { execFileSync } from 'node:child_process';
import { cp, mkdtemp, readFile, rm, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { Worker } from 'node:worker_threads';

import { bilinear, edge } from '../bench/plain.mjs';
import { both, folder, hasVectors, load, moduleNames, noise } from './package.mjs';

const width = 37;
const height = 23;

test('fine: the same bytes of both modules, whole and in parts', () => {
    const mosaic = noise(2 * width * height, 5);
    for (const [format, output] of [
        ['BayerGB8', 'RGB8'],
        ['BayerRG12', 'RGBa16'],
        ['SBGGR10P', 'BGR8_Planar'],
    ]) {
        const options = { format, width, height, algorithm: 'fine', output };
        const bytes = mosaic.subarray(0, both[0].frameBytes(options));
        const whole = both[0].convert(bytes, options);
        for (const kro of both) {
            assert.deepEqual(kro.convert(bytes, options).data, whole.data);
            const part = kro.convert(bytes, { ...options, firstRow: 9, rowCount: 6 });
            const row = whole.planes[0].length / height;
            part.planes.forEach((plane, i) =>
                assert.deepEqual(plane, whole.planes[i].subarray(9 * row, 15 * row)),
            );
            assert.notDeepEqual(kro.convert(bytes, { ...options, algorithm: 'edge' }).data, whole.data);
        }
    }
});

for (const kro of both) {
    const set = kro.instructionSet;
    const mosaic = noise(width * height);

    test(`${set}: bilinear and edge are those of plain loops`, () => {
        for (const [algorithm, plain] of Object.entries({ bilinear, edge })) {
            for (const [w, h] of [
                [32, 18],
                [64, 5],
                [258, 34],
            ]) {
                const samples = noise(w * h, w);
                const picture = kro.convert(samples, {
                    format: 'BayerRG8',
                    width: w,
                    height: h,
                    algorithm,
                    output: 'RGB8',
                });
                assert.deepEqual(
                    picture.data,
                    plain(samples, w, h, new Uint8Array(3 * w * h)),
                    `${algorithm} ${w}x${h}`,
                );
            }
        }
    });

    test(`${set}: every format goes in and comes out with the size that it says`, () => {
        for (const format of kro.frameFormats) {
            const bytes = noise(kro.frameBytes({ format, width, height }));
            for (const output of kro.pictureFormats) {
                const picture = kro.convert(bytes, { format, width, height, output });
                const { bits, planes } = kro.formats.find(({ name }) => name === output);
                assert.equal(picture.data.BYTES_PER_ELEMENT, bits / 8);
                assert.equal(picture.data.byteLength, planes * height * kro.rowBytes(output, width));
                assert.equal(picture.planes.length, planes);
                assert.equal(picture.format, output);
            }
        }
    });

    test(`${set}: grey samples come out as they went in`, () => {
        const words = Uint16Array.from(noise(2 * width * height), (byte, i) => byte * 257 + i).subarray(
            0,
            width * height,
        );
        const picture = kro.convert(words, { format: 'Mono16', width, height, output: 'Mono16' });
        assert.deepEqual(picture.data, words);
        const big = Uint8Array.from({ length: words.byteLength }, (_, i) => words[i >> 1] >> (i % 2 === 0 ? 8 : 0));
        assert.deepEqual(
            kro.convert(big, { format: 'Mono16', width, height, output: 'Mono16', bigEndian: true }).data,
            words,
        );
    });

    test(`${set}: strides, also upwards, change nothing in the picture`, () => {
        const plain = kro.convert(mosaic, { format: 'BayerGB8', width, height, output: 'RGB8' });
        const padded = new Uint8Array(50 * height);
        const upwards = new Uint8Array(50 * height);
        for (let y = 0; y < height; y++) {
            padded.set(mosaic.subarray(y * width, (y + 1) * width), 50 * y);
            upwards.set(mosaic.subarray(y * width, (y + 1) * width), 50 * (height - 1 - y));
        }
        const least = 50 * (height - 1) + width;
        const of = (bytes, stride) =>
            kro.convert(bytes.subarray(0, least), { format: 'BayerGB8', width, height, stride, output: 'RGB8' });
        assert.deepEqual(of(padded, 50).data, plain.data);
        assert.deepEqual(of(upwards, -50).data, plain.data);
    });

    test(`${set}: parts, rows apart, buffers of the caller's`, () => {
        const options = { format: 'BayerGR8', width, height, output: 'RGB16_Planar', algorithm: 'bilinear' };
        const whole = kro.convert(mosaic, options);
        const part = kro.convert(mosaic, { ...options, firstRow: 7, rowCount: 5 });
        assert.equal(part.height, 5);
        part.planes.forEach((plane, i) => assert.deepEqual(plane, whole.planes[i].subarray(7 * width, 12 * width)));

        const stride = 2 * width + 6;
        const into = new Uint8Array(3 * stride * height + 20).fill(0xa5);
        const apart = kro.convert(mosaic, { ...options, outputStride: stride, into: into.subarray(8) });
        assert.equal(apart.data.buffer, into.buffer);
        apart.planes.forEach((plane, i) => {
            for (let y = 0; y < height; y++) {
                const row = plane.subarray((y * stride) / 2, (y * stride) / 2 + width);
                assert.deepEqual(row, whole.planes[i].subarray(y * width, (y + 1) * width));
                assert.ok(new Uint8Array(row.buffer, row.byteOffset + 2 * width, 6).every((byte) => byte === 0xa5));
            }
        });
        assert.ok(
            into.subarray(0, 8).every((byte) => byte === 0xa5) && into.subarray(-12).every((byte) => byte === 0xa5),
        );
    });

    test(`${set}: frames and pictures in the module's memory`, () => {
        const options = { format: 'BayerRG8', width, height, output: 'RGB8' };
        const { data } = kro.convert(mosaic, options);
        const place = kro.reserve(options);
        place.set(mosaic);
        assert.deepEqual(kro.convert(place, { ...options, borrow: true }).data, data);
        // What lies elsewhere in that memory is taken as well.
        const borrowed = kro.convert(place, { ...options, output: 'Mono8', borrow: true }).data;
        const copy = Uint8Array.from(borrowed);
        const fromBorrowed = kro.convert(borrowed, { ...options, format: 'Mono8' }).data;
        assert.deepEqual(fromBorrowed, kro.convert(copy, { ...options, format: 'Mono8' }).data);
        // So is it where the memory has to grow under it.
        const large = kro.reserve({ format: 'Mono8', width: 3000, height: 2000 });
        large.set(noise(large.length));
        const kept = Uint8Array.from(large);
        const asGrey = { format: 'Mono8', width: 3000, height: 2000, output: 'RGBa16' };
        assert.deepEqual(kro.convert(large, asGrey).data, kro.convert(kept, asGrey).data);
    });

    test(`${set}: alpha, bits, full range`, () => {
        const options = { format: 'BayerRG16', width, height };
        const words = new Uint16Array(width * height).fill(1023);
        const pixelOf = (more) => [...kro.convert(words, { ...options, ...more }).data.subarray(0, 4)];
        assert.deepEqual(pixelOf({}), [3, 3, 3, 255]);
        assert.deepEqual(pixelOf({ bits: 10, alpha: 7 }), [255, 255, 255, 7]);
        assert.deepEqual(pixelOf({ bits: 10, output: 'BGRa16', alpha: 60000 }), [1023, 1023, 1023, 60000]);
        assert.deepEqual(pixelOf({ bits: 10, output: 'BGRa16', fullRange: true }), [65535, 65535, 65535, 65535]);
        words.fill(1023 << 6);
        assert.deepEqual(pixelOf({ bits: 10, leftAligned: true }), [255, 255, 255, 255]);
    });

    test(`${set}: a frame of 12 Mpixel, then a small one`, () => {
        const large = { format: 'BayerRG12p', width: 4096, height: 3000, output: 'RGBa8' };
        const { data } = kro.convert(new Uint8Array(kro.frameBytes(large)).fill(255), large);
        assert.equal(data.length, 4 * 4096 * 3000);
        assert.ok(data.every((sample) => sample === 255));
        assert.equal(kro.convert(mosaic, { format: 'BayerRG8', width, height }).data.length, 4 * width * height);
    });

    test(`${set}: the module has no imports, and its name is its file's`, async () => {
        const module = await WebAssembly.compile(await readFile(join(folder, moduleNames[set])));
        assert.deepEqual(WebAssembly.Module.imports(module), []);
        assert.equal((await load({ wasm: module })).instructionSet, set);
        const bytes = await readFile(join(folder, moduleNames[set]));
        assert.equal((await load({ wasm: bytes })).instructionSet, set);
        assert.equal((await load({ wasm: new URL(`file://${join(folder, moduleNames[set])}`) })).instructionSet, set);
    });
}

test('both modules make the same bytes', () => {
    for (const [format, output] of [
        ['BayerGB12p', 'BGR16'],
        ['SBGGR10P', 'xRGB8'],
        ['Mono14', 'RGB8_Planar'],
    ]) {
        const options = { format, width: 517, height: 61, output };
        const [a, b] = both.map((kro) => kro.convert(noise(kro.frameBytes(options)), options).data);
        assert.deepEqual(a, b);
    }
});

test('without vectors the scalar module is taken', async () => {
    assert.equal(hasVectors(), true);
    assert.equal((await load()).instructionSet, 'simd128');
    const validate = WebAssembly.validate;
    WebAssembly.validate = () => false;
    try {
        assert.equal((await load()).instructionSet, 'scalar');
    } finally {
        WebAssembly.validate = validate;
    }
});

test('the scalar module uses nothing newer than the first version of WebAssembly and sign extension', async () => {
    // What objdump prints of the other module shows that it would be found.
    const instructionsOf = async (name) =>
        execFileSync('llvm-objdump-14', ['-d', '--no-show-raw-insn', join(folder, name)], {
            encoding: 'utf8',
            maxBuffer: 2 ** 28,
        });
    const newer = /\s(v128|[iuf]\d+x\d+|memory\.(copy|fill)|[if]\d+\.trunc_sat)\S*/;
    assert.match(await instructionsOf('kro.wasm'), newer);
    assert.doesNotMatch(await instructionsOf('kro-scalar.wasm'), newer);
});

test('in a worker', async () => {
    const text = `import { load } from '${join(folder, 'kro.js')}';
        import { parentPort } from 'node:worker_threads';
        const kro = await load();
        const options = { format: 'BayerRG8', width: 4, height: 4 };
        parentPort.postMessage(kro.convert(new Uint8Array(16).fill(9), options).data);`;
    const temporary = await mkdtemp(join(tmpdir(), 'kro-worker-'));
    await writeFile(join(temporary, 'worker.mjs'), text);
    const worker = new Worker(join(temporary, 'worker.mjs'));
    const data = await new Promise((done, failed) => worker.once('message', done).once('error', failed));
    await rm(temporary, { recursive: true });
    assert.deepEqual([...data.subarray(0, 4)], [9, 9, 9, 255]);
});

test('imported by its name, of the files that it says it has', async () => {
    const temporary = await mkdtemp(join(tmpdir(), 'kro-imported-'));
    try {
        const { files } = JSON.parse(await readFile(join(folder, 'package.json')));
        for (const name of ['package.json', ...files]) {
            await cp(join(folder, name), join(temporary, 'node_modules/kro', name));
        }
        await writeFile(
            join(temporary, 'use.mjs'),
            `import { load } from 'kro';
            const kro = await load();
            const { data } = kro.convert(new Uint8Array(16).fill(9), { format: 'BayerRG8', width: 4, height: 4 });
            console.log(data.length, data[0]);`,
        );
        assert.equal(execFileSync(process.execPath, ['use.mjs'], { cwd: temporary, encoding: 'utf8' }), '64 9\n');
    } finally {
        await rm(temporary, { recursive: true });
    }
});
