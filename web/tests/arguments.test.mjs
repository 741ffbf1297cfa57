// Arguments that are none: the exception names the argument, what came and what was expected; the instance goes on.
import { strict as assert } from 'node:assert';
import { test } from 'node:test';

import { both, load, noise } from './package.mjs';

const good = { format: 'BayerRG8', width: 8, height: 6 };
const bytes = noise(48);

// The argument, what is given for it, and what the message says of both.
const wrong = [
    ['width', undefined, TypeError, /width is undefined, expected a whole number from 4 to /],
    ['width', '8', TypeError, /width is '8', expected a whole number/],
    ['width', 8n, TypeError, /width is 8n, expected/],
    ['width', 3, RangeError, /width is 3, expected a whole number from 4 to /],
    ['width', 7.5, RangeError, /width is 7\.5, expected/],
    ['width', NaN, RangeError, /width is NaN, expected/],
    ['height', -6, RangeError, /height is -6, expected/],
    ['height', Infinity, RangeError, /height is Infinity, expected/],
    ['height', 2 ** 28, RangeError, /width x height is 8x268435456, expected at most 1073741824 samples/],
    ['format', undefined, TypeError, /format is undefined, expected the name of a format of frames/],
    ['format', 0x01080009, TypeError, /format is 17301513, expected/],
    ['format', 'RGB8', RangeError, /format is 'RGB8', expected the name of a format of frames/],
    ['format', 'toString', RangeError, /format is 'toString', expected/],
    ['output', 'BayerRG8', RangeError, /output is 'BayerRG8', expected the name of a format of pictures/],
    ['output', null, TypeError, /output is null, expected/],
    ['algorithm', 'best', RangeError, /algorithm is 'best', expected nearest, bilinear, edge, fine/],
    ['algorithm', 2, TypeError, /algorithm is 2, expected nearest, bilinear, edge, fine/],
    ['stride', 7, RangeError, /stride is 7, expected 0 or at least the 8 bytes of a row of 8 BayerRG8/],
    ['stride', 0.5, RangeError, /stride is 0\.5, expected/],
    ['outputStride', 31, RangeError, /outputStride is 31, expected 0 or at least the 32 bytes of a row of 8 RGBa8/],
    ['bits', 10, RangeError, /bits is 10, expected 0 or the 8 of BayerRG8/],
    ['bits', 17, RangeError, /bits is 17, expected/],
    ['bigEndian', true, RangeError, /bigEndian is true, expected false, as samples of BayerRG8 are no words/],
    ['leftAligned', 1, TypeError, /leftAligned is 1, expected true or false/],
    ['fullRange', 'yes', TypeError, /fullRange is 'yes', expected true or false/],
    ['alpha', 256, RangeError, /alpha is 256, expected a whole number from 0 to 255/],
    ['firstRow', 6, RangeError, /firstRow is 6, expected a whole number from 0 to 5/],
    ['rowCount', 7, RangeError, /rowCount is 7, expected a whole number from 1 to 6/],
    ['into', new Uint8Array(191), RangeError, /into has 191 bytes, expected at least 192 for 6 rows of 8 RGBa8/],
    ['into', [1, 2], TypeError, /into is a Array, expected an ArrayBuffer/],
    ['borrow', {}, TypeError, /borrow is a Object, expected true or false/],
    ['size', '8x6', TypeError, /there is no option 'size', expected format, width/],
];

for (const kro of both) {
    const stillRight = () => assert.equal(kro.convert(bytes, good).data.length, 192);

    for (const [name, value, type, message] of wrong) {
        test(`${kro.instructionSet}: ${name} ${typeof value} ${String(value)}`, () => {
            assert.throws(
                () => kro.convert(bytes, { ...good, [name]: value }),
                (error) => error instanceof type && message.test(error.message),
            );
            stillRight();
        });
    }

    test(`${kro.instructionSet}: bytes`, () => {
        for (const value of [undefined, null, 48, 'frame', [1, 2, 3], {}, Symbol('frame')]) {
            assert.throws(() => kro.convert(value, good), /bytes is .*, expected an ArrayBuffer, or a typed array/);
        }
        assert.throws(
            () => kro.convert(bytes.subarray(1), good),
            /bytes has 47, expected at least 48 for a frame of 8x6 BayerRG8/,
        );
        const gone = new Uint8Array(48);
        structuredClone(gone.buffer, { transfer: [gone.buffer] });
        assert.throws(() => kro.convert(gone, good), /bytes has 0, expected at least 48/);
        assert.throws(
            () => kro.convert(bytes),
            /options is undefined, expected an object with format, width and height/,
        );
        stillRight();
    });

    test(`${kro.instructionSet}: combinations`, () => {
        const words = { ...good, format: 'BayerRG12' };
        const refused = [
            [{ ...words, stride: 17 }, /stride is 17, expected an even number, as samples are words/],
            [{ ...words, bits: 7 }, /bits is 7, expected 0, or 8 to 16/],
            [{ ...words, output: 'RGB16', outputStride: 49 }, /outputStride is 49, expected .* an even number/],
            [
                { ...words, output: 'RGB16', into: new Uint8Array(400).subarray(1) },
                /into begins at byte 1 of its buffer/,
            ],
            [
                { ...words, borrow: true, into: new Uint8Array(400) },
                /borrow is true, expected false together with into/,
            ],
            [{ ...words, into: kro.reserve(words) }, /into (has|lies in the module's own memory)/],
        ];
        for (const [options, message] of refused) {
            assert.throws(() => kro.convert(noise(200), options), message);
        }
        stillRight();
    });

    test(`${kro.instructionSet}: more than memory can be`, () => {
        const options = { format: 'Mono8', width: 32768, height: 32768, output: 'RGBa16' };
        assert.throws(
            () => kro.reserve(options),
            /no memory for a frame of 32768x32768 Mono8 and its picture in RGBa16, 92\d\d MiB together/,
        );
        stillRight();
    });

    test(`${kro.instructionSet}: anything at all`, () => {
        const values = [
            undefined,
            null,
            true,
            false,
            0,
            -0,
            1,
            4,
            5,
            8,
            10,
            16,
            17,
            63,
            2 ** 16,
            2 ** 30,
            2 ** 31,
            2 ** 32 + 4,
            2 ** 53,
            -1,
            -8,
            -64,
            0.1,
            NaN,
            -Infinity,
            '',
            '8',
            'edge',
            'RGBa8',
            'BayerRG12',
            'BayerRG12p',
            'Mono16',
            12n,
            [],
            [8],
            {},
            () => 8,
            Symbol('x'),
            new Date(0),
            new Uint8Array(4000),
            new Uint16Array(3),
            new ArrayBuffer(9),
        ];
        const names = [
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
            '__proto__',
            'widht',
        ];
        let state = 12345;
        const below = (count) => {
            state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
            return Math.floor((state / 2 ** 32) * count);
        };
        const frames = noise(4000);
        let made = 0;
        let refused = 0;
        for (let round = 0; round < 20000; round++) {
            const options = { ...good };
            for (let changes = 1 + below(3); changes > 0; changes--) {
                options[names[below(names.length)]] = values[below(values.length)];
            }
            const given = below(8) === 0 ? values[below(values.length)] : frames;
            try {
                const { data, width, height } = kro.convert(given, options);
                assert.ok(data.length >= width * height, `round ${round}`);
                made++;
            } catch (error) {
                assert.ok(error instanceof TypeError || error instanceof RangeError, error.stack);
                assert.match(error.message, /^kro: .*(expected|no memory)/);
                refused++;
            }
        }
        assert.ok(made > 1000 && refused > 1000, `${made} pictures, ${refused} refused`);
        stillRight();
    });
}

test('what is loaded', async () => {
    await assert.rejects(load({ vectors: 'yes' }), /vectors is 'yes', expected true or false/);
    await assert.rejects(load({ wasm: new Uint8Array([1, 2, 3]) }), WebAssembly.CompileError);
    await assert.rejects(load({ wasm: new URL('no-such-file.wasm', import.meta.url) }), /no-such-file\.wasm/);
});
