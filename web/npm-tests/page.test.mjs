// Every control of the page, files that are none, large ones; what it shows against the package's own pictures.
import { strict as assert } from 'node:assert';
import { after, before, test } from 'node:test';
import { join } from 'node:path';

import { bytesOf, kro, scene, start } from './browser.mjs';

const width = 320;
const height = 240;
const words = scene(width, height);
const frame = { name: 'scene_320x240_BayerRG12.raw', bytes: bytesOf(words) };
const nameless = { name: 'capture.bin', bytes: frame.bytes };
const convert = (options) =>
    new Uint8Array(
        kro.convert(frame.bytes, { format: 'BayerRG12', width, height, output: 'RGBa8', ...options }).data,
    );

let browser;
before(async () => {
    browser = await start(frame);
});
after(() => browser.stop());

const shoot = async (page, name) => {
    if (process.env.KRO_SCREENSHOTS) {
        await page.tab.screenshot({ path: join(process.env.KRO_SCREENSHOTS, `${name}.png`), fullPage: true });
    }
};
const onPage = (name, body, options) =>
    test(name, { timeout: 120000 }, async () => {
        const page = await browser.open(options);
        await body(page, page.tab);
        await page.close();
    });
const valueOf = (tab, selector) => tab.inputValue(selector);

onPage('a chosen file is read as its name says, and shown by each algorithm', async (page, tab) => {
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');
    assert.equal(await valueOf(tab, '#format'), 'BayerRG12');
    assert.deepEqual([await valueOf(tab, '#width'), await valueOf(tab, '#height')], ['320', '240']);
    for (const algorithm of kro.algorithms) {
        const png = await page.png(algorithm);
        assert.equal(png.name, `scene_320x240_BayerRG12-${algorithm}.png`);
        assert.deepEqual([png.width, png.height], [width, height]);
        assert.deepEqual(png.pixels, convert({ algorithm }), algorithm);
    }
    for (const time of await tab.locator('.time').allTextContents()) {
        assert.match(time, /^\d+\.\d\d ms, [\d,]+ Mpixel\/s$/);
    }
});

onPage('a dropped file, and one of those to try', async (page, tab) => {
    const transfer = await tab.evaluateHandle((base64) => {
        const bytes = Uint8Array.from(atob(base64), (letter) => letter.charCodeAt(0));
        const data = new DataTransfer();
        data.items.add(new File([bytes], 'dropped_320x240_BayerRG12.raw'));
        return data;
    }, Buffer.from(frame.bytes).toString('base64'));
    await tab.dispatchEvent('body', 'dragover', { dataTransfer: transfer });
    assert.match(await tab.getAttribute('body', 'class'), /dropping/);
    await tab.dispatchEvent('body', 'drop', { dataTransfer: transfer });
    await page.shows('dropped_320x240_BayerRG12.raw');
    assert.doesNotMatch(await tab.getAttribute('body', 'class'), /dropping/);
    await tab.click('text=one to try');
    await page.shows('scene_320x240_BayerRG12.raw');
});

onPage('a file without a telling name is read by its bytes; the next meaning is a click away', async (page, tab) => {
    await page.choose(nameless);
    await page.shows('capture.bin · 153,600 bytes · 320x240 BayerRG12');
    assert.deepEqual((await page.png('edge')).pixels, convert({ algorithm: 'edge' }));
    await tab.click('#meanings summary');
    const answers = tab.locator('#answers button');
    assert.match(
        await answers.first().textContent(),
        /^320x240 BayerRG12 \(.*\)little-endian words, values of 12 bits; /,
    );
    await answers.nth(1).click();
    await page.shows('320x240 BayerBG12');
    assert.deepEqual((await page.png('edge')).pixels, convert({ format: 'BayerBG12' }));
});

onPage('what the name leaves open is told by the bytes on demand', async (page, tab) => {
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');
    await tab.click('#meanings summary');
    await tab.waitForSelector('#answers button');
    assert.match(await tab.locator('#answers button').first().textContent(), /^320x240 BayerRG12 /);
});

onPage('each field changes the picture at once, or says what is wrong', async (page, tab) => {
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');
    await tab.selectOption('#format', 'BayerGB12');
    await page.shows('320x240 BayerGB12');
    assert.deepEqual((await page.png('bilinear')).pixels, convert({ format: 'BayerGB12', algorithm: 'bilinear' }));
    await tab.selectOption('#format', 'BayerRG12');

    await tab.fill('#height', '100');
    await page.shows('320x100 BayerRG12');
    assert.match(await tab.textContent('#about'), /2 frames · 25,600 bytes left over/);
    await tab.fill('#frame', '2');
    await page.settled();
    assert.deepEqual(
        (await page.png('edge')).pixels,
        new Uint8Array(kro.convert(words.subarray(32000), { format: 'BayerRG12', width, height: 100 }).data),
    );

    await tab.fill('#frame', '3');
    assert.equal(
        await page.complaint(),
        'scene_320x240_BayerRG12.raw holds 2 of 320x100 BayerRG12, expected a frame from 1 to 2, not 3',
    );
    await tab.fill('#frame', '0');
    assert.match(await page.complaint(), /^Frame: /);
    await tab.fill('#frame', '1');
    await tab.fill('#height', '2000');
    assert.equal(
        await page.complaint(),
        'scene_320x240_BayerRG12.raw has 153600 bytes, expected at least 1280000 for 320x2000 BayerRG12',
    );
    await tab.fill('#height', '3');
    assert.match(await page.complaint(), /^Height: /);
    assert.match(await tab.getAttribute('#height', 'class'), /wrong/);
    await tab.fill('#height', '');
    assert.match(await page.complaint(), /^Height: /);
    await tab.fill('#height', '120');
    await page.shows('320x120 BayerRG12');

    await tab.click('#more summary');
    await tab.fill('#skip', '1280');
    await page.shows('320x120');
    assert.deepEqual(
        (await page.png('nearest')).pixels,
        new Uint8Array(
            kro.convert(words.subarray(640), { format: 'BayerRG12', width, height: 120, algorithm: 'nearest' }).data,
        ),
    );
    await tab.fill('#skip', '0');
    await tab.fill('#stride', '1280');
    await page.settled();
    assert.deepEqual((await page.png('edge')).pixels, convert({ height: 120, stride: 1280 }));
    await tab.fill('#stride', '639');
    assert.match(
        await page.complaint(),
        /stride is 639, expected 0 or at least the 640 bytes of a row of 320 BayerRG12/,
    );
    await tab.fill('#stride', '');
    await tab.fill('#bits', '10');
    await page.shows('320x120');
    assert.deepEqual((await page.png('edge')).pixels, convert({ height: 120, bits: 10 }));
    await tab.fill('#bits', '');
    await tab.check('#big-endian');
    await page.settled();
    assert.deepEqual((await page.png('edge')).pixels, convert({ height: 120, bigEndian: true }));
    await tab.uncheck('#big-endian');
    await tab.selectOption('#format', 'BayerRG8');
    await page.settled();
    assert.equal(await tab.isDisabled('#bits'), true);
    assert.equal(await tab.isDisabled('#big-endian'), true);
});

onPage('balance and gamma are for looking, and can be taken back', async (page, tab) => {
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');
    const straight = convert({ algorithm: 'bilinear' });
    const sums = [0, 0, 0];
    words.forEach((word, i) => {
        sums[(Math.floor(i / width) & 1) + ((i % width) & 1)] += word;
    });
    const expected = (gains, gamma) =>
        straight.map((value, i) =>
            i % 4 === 3 ? 255 : Math.round(255 * Math.min(1, (value / 255) * gains[i % 4]) ** (1 / gamma)),
        );

    await tab.selectOption('#balance', 'gray');
    await page.settled();
    const gains = [sums[1] / 2 / sums[0], 1, sums[1] / 2 / sums[2]];
    assert.deepEqual((await page.png('bilinear')).pixels, expected(gains, 1));
    assert.equal(await tab.textContent('output[for=red]'), gains[0].toFixed(2));

    await tab.fill('#gamma', '2.2');
    await page.settled();
    assert.deepEqual((await page.png('bilinear')).pixels, expected(gains, 2.2));
    await tab.fill('#red', '1.5');
    await tab.fill('#blue', '0.5');
    await page.settled();
    assert.equal(await valueOf(tab, '#balance'), 'hand');
    assert.deepEqual((await page.png('bilinear')).pixels, expected([1.5, 1, 0.5], 2.2));

    await tab.click('#as-converted');
    await page.settled();
    assert.deepEqual((await page.png('bilinear')).pixels, straight);
    assert.deepEqual(
        [await valueOf(tab, '#balance'), await valueOf(tab, '#gamma'), await valueOf(tab, '#red')],
        ['none', '1', '1'],
    );
});

// The picture's pixel in a corner of each block of 8x8 of a canvas, and that all of the block are the same.
function blocksOf({ width: across, height: down, pixels }, side) {
    const at = (x, y) => pixels.subarray(4 * (y * across + x), 4 * (y * across + x) + 4).join();
    let startX = 0;
    while (at(startX, 20) === at(startX + 1, 20)) {
        startX++;
    }
    startX = (startX + 1) % side;
    let blocks = 0;
    for (let x = startX + side * 4; x + side < across - side; x += side) {
        for (let i = 1; i < side; i++) {
            assert.equal(at(x + i, 20), at(x, 20), `column ${x + i}`);
        }
        blocks += at(x, 20) === at(x + side, 20) ? 0 : 1;
    }
    return blocks;
}

onPage('magnified pictures are linked, of whole pixels, by buttons, wheel, keys and drags', async (page, tab) => {
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');
    const scale = () => tab.textContent('#scale');
    await tab.click('#one');
    assert.equal(await scale(), '1:1');
    await tab.click('#eight');
    assert.equal(await scale(), '8:1');
    await page.settled();
    for (const view of [0, 1, 2]) {
        assert.ok(blocksOf(await page.canvas(view), 8) > 5, `view ${view}`);
    }
    await tab.click('#zoom-in');
    assert.equal(await scale(), '11.31:1');
    await tab.click('#zoom-out');
    assert.equal(await scale(), '8:1');

    const canvas = tab.locator('.view canvas').nth(1);
    const seen = async () => Buffer.from((await page.canvas(2)).pixels).toString('base64');
    const before = await seen();
    const box = await canvas.boundingBox();
    await tab.mouse.move(box.x + 200, box.y + 150);
    await tab.mouse.down();
    await tab.mouse.move(box.x + 120, box.y + 110, { steps: 4 });
    await tab.mouse.up();
    await page.settled();
    assert.notEqual(await seen(), before, 'dragging one picture moves another');
    await tab.mouse.wheel(0, -300);
    await page.settled();
    assert.notEqual(await scale(), '8:1');
    await canvas.dblclick({ position: { x: 100, y: 100 } });
    await canvas.focus();
    await tab.keyboard.press('1');
    assert.equal(await scale(), '1:1');
    await tab.keyboard.press('+');
    assert.equal(await scale(), '1.41:1');
    await tab.keyboard.press('-');
    assert.equal(await scale(), '1:1');
    await tab.keyboard.press('0');
    const fitted = await scale();
    await tab.click('#eight');
    await tab.click('#fit');
    assert.equal(await scale(), fitted);
    assert.match(fitted, /^1\.\d+:1$/);
});

onPage('the pixel under the pointer, and by keys', async (page, tab) => {
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');
    const canvas = tab.locator('.view canvas').first();
    const box = await canvas.boundingBox();
    await tab.mouse.move(box.x + box.width * (100.5 / width), box.y + box.height * (60.5 / height));
    await tab.waitForFunction(() => document.querySelector('#pixel').textContent.startsWith('column 100, row 60'));
    assert.equal(await tab.textContent('#pixel'), `column 100, row 60: red sample ${words[60 * width + 100]}`);
    const rows = await tab.locator('#values tbody tr').allTextContents();
    kro.algorithms.forEach((algorithm, i) => {
        const at = 4 * (60 * width + 100);
        assert.equal(rows[i], `${algorithm}${[...convert({ algorithm }).subarray(at, at + 3)].join('')}`);
    });

    await canvas.focus();
    await tab.keyboard.press('ArrowRight');
    await tab.keyboard.press('Shift+ArrowDown');
    await tab.waitForFunction(() => document.querySelector('#pixel').textContent.startsWith('column 101, row 70'));
    assert.equal(await tab.textContent('#pixel'), `column 101, row 70: green sample ${words[70 * width + 101]}`);
    for (let i = 0; i < 9; i++) {
        await tab.keyboard.press('Shift+ArrowUp');
    }
    await tab.waitForFunction(() => document.querySelector('#pixel').textContent.startsWith('column 101, row 0'));
});

onPage('raw samples of packed and grey frames', async (page, tab) => {
    const packed = kro.frameBytes({ format: 'Mono12p', width: 64, height: 48 });
    const bytes = new Uint8Array(packed);
    for (let i = 0; i < 64 * 48; i++) {
        // 12 bits each, lowest first
        const value = (i * 5) & 4095;
        bytes[(i >> 1) * 3 + (i & 1)] |= i & 1 ? (value & 15) << 4 : value & 255;
        bytes[(i >> 1) * 3 + 1 + (i & 1)] |= i & 1 ? value >> 4 : value >> 8;
    }
    await page.choose({ name: 'ramp_64x48_Mono12p.raw', bytes });
    await page.shows('64x48 Mono12p');
    const canvas = tab.locator('.view canvas').first();
    const box = await canvas.boundingBox();
    await tab.mouse.move(box.x + box.width * (33.5 / 64), box.y + box.height * (20.5 / 48));
    await tab.waitForFunction(() => document.querySelector('#pixel').textContent.includes('grey sample'));
    assert.equal(await tab.textContent('#pixel'), `column 33, row 20: grey sample ${((20 * 64 + 33) * 5) & 4095}`);
});

onPage('the histogram', async (page, tab) => {
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');
    const [least, most] = [words.reduce((a, b) => Math.min(a, b)), words.reduce((a, b) => Math.max(a, b))];
    assert.equal(await tab.textContent('#range'), `${least} to ${most}, shown from 0 to 4095`);
    assert.match(
        await tab.getAttribute('#histogram', 'aria-label'),
        new RegExp(`^Histogram of the samples, ${least} to ${most}, means of red`),
    );
    const drawn = () => tab.evaluate(() => document.querySelector('#histogram').toDataURL());
    const linear = await drawn();
    await tab.check('#logarithmic');
    assert.notEqual(await drawn(), linear);
});

onPage('files that are no frames', async (page, tab) => {
    await page.choose({ name: 'empty.raw', bytes: [] });
    assert.equal(await page.complaint(), 'empty.raw is empty, expected the bytes of a raw frame');
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');

    const png = await tab.evaluate(() => {
        const canvas = document.createElement('canvas');
        Object.assign(canvas, { width: 40, height: 30 });
        return canvas.toDataURL().split(',')[1];
    });
    await page.choose({ name: 'photo_320x240_BayerRG8.raw', bytes: Buffer.from(png, 'base64') });
    assert.equal(
        await page.complaint(),
        'photo_320x240_BayerRG8.raw is a picture already (40x30), expected the bytes of a raw frame',
    );
    assert.match(await tab.textContent('#about'), /^scene_320x240/, 'the last frame stays');

    let state = 1;
    const noise = Uint8Array.from({ length: 100000 }, () => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        return state >>> 24;
    });
    await page.choose({ name: 'noise.bin', bytes: noise });
    assert.match(
        await page.complaint(),
        /^Nothing in noise\.bin looks like rows of samples, and its name does not say size and format/,
    );
    await shoot(page, 'wrong-file');
    await tab.selectOption('#format', 'Mono8');
    await tab.fill('#width', '400');
    await tab.fill('#height', '250');
    await page.shows('noise.bin · 100,000 bytes · 400x250 Mono8');
});

onPage('a name that promises more than there is', async (page) => {
    await page.choose({ name: 'capture_640x480_BayerRG12.raw', bytes: frame.bytes });
    await page.shows('320x240 BayerRG12');
});

onPage('a frame of 12 Mpixel', async (page, tab) => {
    const large = { format: 'BayerRG12p', width: 4096, height: 3000 };
    const bytes = new Uint8Array(kro.frameBytes(large)).map((_, i) => (i * 37) >> 9);
    await page.choose({ name: 'large_4096x3000_BayerRG12p.raw', bytes });
    await page.shows('4096x3000 BayerRG12p');
    await tab.selectOption('#balance', 'gray');
    await page.settled();
    await tab.click('#as-converted');
    await page.settled();
    await tab.click('#one');
    await page.settled();
    const { width: across, height: down, pixels } = await page.canvas(1);
    const whole = kro.convert(bytes, { ...large, algorithm: 'bilinear' }).data;
    // The middle of the picture lies in the middle of the canvas.
    const [x0, y0] = [2048 - Math.round(across / 2), 1500 - Math.round(down / 2)];
    for (let y = 40; y < down; y += 50) {
        const row = whole.subarray(4 * ((y0 + y) * 4096 + x0 + 10), 4 * ((y0 + y) * 4096 + x0 + 210));
        assert.deepEqual(pixels.subarray(4 * (y * across + 10), 4 * (y * across + 210)), row, `row ${y}`);
    }
    await shoot(page, 'large');
});

onPage('by keyboard alone: everything is reached, in the order of reading', async (page, tab) => {
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');
    await tab.evaluate(() => document.activeElement.blur());
    const reached = [];
    for (let i = 0; i < 40; i++) {
        await tab.keyboard.press('Tab');
        const name = await tab.evaluate(() => {
            const { id, className, tagName, textContent } = document.activeElement;
            return id || className || (tagName === 'CANVAS' ? 'canvas' : textContent.trim());
        });
        if (name === '' || name === reached[0]) {
            break;
        }
        reached.push(name);
    }
    const order = [
        'file',
        'one to try',
        'format',
        'width',
        'height',
        'Header, padding, bits',
        'What else it can be',
        'balance',
        'red',
        'blue',
        'gamma',
        'as-converted',
        'zoom-out',
        'zoom-in',
        'fit',
        'one',
        'eight',
        ...kro.algorithms.flatMap(() => ['png', 'canvas']),
        'logarithmic',
    ];
    assert.deepEqual(
        reached.filter((name) => order.includes(name)),
        order,
    );
});

onPage('every control has a name', async (page, tab) => {
    await page.choose(frame);
    await page.shows('320x240 BayerRG12');
    await tab.click('#more summary');
    const nameless = await tab.evaluate(() =>
        [...document.querySelectorAll('button, input, select, canvas')]
            .filter((control) => {
                const label =
                    control.getAttribute('aria-label') ??
                    [...(control.labels ?? [])].map((one) => one.textContent).join() ??
                    '';
                return (label || control.textContent).trim() === '';
            })
            .map((control) => control.outerHTML),
    );
    assert.deepEqual(nameless, []);
});

for (const colorScheme of ['light', 'dark']) {
    onPage(
        `${colorScheme}, on a desk`,
        async (page, tab) => {
            await shoot(page, `desk-${colorScheme}-empty`);
            await page.choose(frame);
            await page.shows('320x240 BayerRG12');
            const ground = await tab.evaluate(() =>
                getComputedStyle(document.body).backgroundColor.match(/\d+/g).map(Number),
            );
            assert.equal(ground[0] > 128, colorScheme === 'light');
            await tab.click('#eight');
            await page.settled();
            await shoot(page, `desk-${colorScheme}`);
        },
        { colorScheme },
    );

    for (const across of [320, 390]) {
        onPage(
            `${colorScheme}, on a telephone ${across} wide, by touch`,
            async (page, tab) => {
                await page.choose(frame);
                await page.shows('320x240 BayerRG12');
                await tab.click('#more summary');
                assert.ok(
                    await tab.evaluate(() => document.documentElement.scrollWidth <= window.innerWidth),
                    'nothing is cut off',
                );
                const small = await tab.evaluate(() =>
                    [...document.querySelectorAll('button, .button, select')]
                        .filter((control) => control.offsetParent && control.getBoundingClientRect().height < 36)
                        .map((control) => control.outerHTML),
                );
                assert.deepEqual(small, [], 'large enough for a finger');
                const canvas = tab.locator('.view canvas').nth(1);
                await canvas.scrollIntoViewIfNeeded();
                await canvas.tap({ position: { x: 50, y: 40 } });
                await tab.waitForFunction(() =>
                    /^column \d+, row \d+: .* sample \d+$/.test(document.querySelector('#pixel').textContent),
                );
                const before = await tab.textContent('#scale');
                await pinch(tab, await canvas.boundingBox());
                await page.settled();
                const ratio = (text) => (text.endsWith('%') ? parseFloat(text) / 100 : parseFloat(text));
                assert.ok(
                    ratio(await tab.textContent('#scale')) > 1.8 * ratio(before),
                    `${before} to ${await tab.textContent('#scale')}`,
                );
                await shoot(page, `telephone-${colorScheme}-${across}`);
            },
            {
                colorScheme,
                viewport: { width: across, height: 800 },
                deviceScaleFactor: 2,
                isMobile: true,
                hasTouch: true,
            },
        );
    }
}

// Two fingers that part from 40 to 120 pixels.
async function pinch(tab, box) {
    const session = await tab.context().newCDPSession(tab);
    const at = (apart) =>
        [-1, 1].map((side, id) => ({ id, x: box.x + box.width / 2 + (side * apart) / 2, y: box.y + box.height / 2 }));
    await session.send('Input.dispatchTouchEvent', { type: 'touchStart', touchPoints: at(40) });
    for (let apart = 50; apart <= 120; apart += 10) {
        await session.send('Input.dispatchTouchEvent', { type: 'touchMove', touchPoints: at(apart) });
    }
    await session.send('Input.dispatchTouchEvent', { type: 'touchEnd', touchPoints: [] });
}
