// The page in Chromium: served from its folder, watched for errors and for requests to anywhere else.
import { strict as assert } from 'node:assert';
import { cp, mkdir, mkdtemp, rm, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

import { serve } from '../serve.mjs';

const page = process.env.KRO_PAGE ?? '../../build/wasm/web/page';
const { load } = await import(
    pathToFileURL(join(resolve(process.env.KRO_PACKAGE ?? '../../build/wasm/web/package'), 'kro.js'))
);
export const kro = await load();

/** A browser with the page, whose only frame to try is the given one. */
export async function start(frame) {
    const folder = await mkdtemp(join(tmpdir(), 'kro-page-'));
    await cp(page, folder, { recursive: true, filter: (path) => !path.endsWith('frames') });
    await mkdir(join(folder, 'frames'));
    await writeFile(join(folder, 'frames', frame.name), frame.bytes);
    await writeFile(
        join(folder, 'frames', 'frames.json'),
        JSON.stringify([{ file: frame.name, label: 'one to try' }]),
    );
    const { server, address } = await serve(folder);
    // As root, which CI may be, Chromium has no sandbox of its own.
    const browser = await chromium.launch({
        executablePath: process.env.KRO_CHROMIUM ?? '/usr/bin/chromium',
        args: ['--no-sandbox', '--disable-background-networking'],
    });
    return {
        open: (options) => openPage(browser, address, options),
        async stop() {
            await browser.close();
            server.close();
            await rm(folder, { recursive: true });
        },
    };
}

async function openPage(browser, address, options = {}) {
    const context = await browser.newContext({ viewport: { width: 1400, height: 1000 }, ...options });
    const tab = await context.newPage();
    const troubles = [];
    tab.on('console', (message) => message.type() === 'error' && troubles.push(message.text()));
    tab.on('pageerror', (error) => troubles.push(error.message));
    tab.on('request', (request) => {
        if (!/^(blob|data):/.test(request.url()) && !request.url().startsWith(address)) {
            troubles.push(`request to ${request.url()}`);
        }
    });
    await tab.goto(address);
    await tab.waitForSelector('html[data-ready]');
    return new Opened(context, tab, troubles);
}

class Opened {
    constructor(context, tab, troubles) {
        Object.assign(this, { context, tab, troubles });
    }

    async close() {
        assert.deepEqual(this.troubles, []);
        await this.context.close();
    }

    async choose({ name, bytes }) {
        await this.tab.setInputFiles('#file', {
            name,
            mimeType: 'application/octet-stream',
            buffer: Buffer.from(bytes),
        });
    }

    /** Waits for what `#about` says once the frame is shown. */
    async shows(text) {
        await this.tab.waitForFunction(
            (part) =>
                document.querySelector('#about').textContent.includes(part) &&
                !document.querySelector('#views').classList.contains('stale') &&
                document.querySelector('#message').hidden &&
                [...document.querySelectorAll('.time')].every((time) => time.textContent !== ''),
            text,
        );
        await this.settled();
    }

    /** Waits until what is asked has been answered and drawn. */
    async settled() {
        await this.tab.evaluate(async () => {
            const frame = () => new Promise((done) => requestAnimationFrame(done));
            do {
                await new Promise((done) => setTimeout(done, 60));
                await frame();
            } while (document.documentElement.dataset.busy === 'yes');
            await frame();
            await frame();
        });
    }

    async complaint() {
        await this.settled();
        await this.tab.waitForSelector('#message:not([hidden])');
        return this.tab.textContent('#message');
    }

    /** The pixels of the PNG file that a button gives, as RGBA, and its name. */
    async png(algorithm) {
        const [download] = await Promise.all([
            this.tab.waitForEvent('download'),
            this.tab.click(`role=button[name="Download the ${algorithm} picture as PNG"]`),
        ]);
        const chunks = [];
        for await (const chunk of await download.createReadStream()) {
            chunks.push(chunk);
        }
        const { width, height, pixels } = await this.decoded(Buffer.concat(chunks));
        return { name: download.suggestedFilename(), width, height, pixels };
    }

    async decoded(file) {
        const { width, height, base64 } = await this.tab.evaluate(async (encoded) => {
            const bytes = Uint8Array.from(atob(encoded), (letter) => letter.charCodeAt(0));
            const bitmap = await createImageBitmap(new Blob([bytes], { type: 'image/png' }));
            const canvas = document.createElement('canvas');
            Object.assign(canvas, { width: bitmap.width, height: bitmap.height });
            canvas.getContext('2d').drawImage(bitmap, 0, 0);
            const { data } = canvas.getContext('2d').getImageData(0, 0, bitmap.width, bitmap.height);
            let text = '';
            for (let i = 0; i < data.length; i += 8192) {
                text += String.fromCharCode(...data.subarray(i, i + 8192));
            }
            return { width: bitmap.width, height: bitmap.height, base64: btoa(text) };
        }, file.toString('base64'));
        return { width, height, pixels: new Uint8Array(Buffer.from(base64, 'base64')) };
    }

    /** What a picture's canvas shows, as RGBA. */
    async canvas(index) {
        const { width, height, base64 } = await this.tab.evaluate((i) => {
            const canvas = document.querySelectorAll('.view canvas')[i];
            const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
            let text = '';
            for (let k = 0; k < data.length; k += 8192) {
                text += String.fromCharCode(...data.subarray(k, k + 8192));
            }
            return { width: canvas.width, height: canvas.height, base64: btoa(text) };
        }, index);
        return { width, height, pixels: new Uint8Array(Buffer.from(base64, 'base64')) };
    }
}

/** A frame of words of 12 bits as BayerRG12, of a scene that is smooth but for a disc and a line. */
export function scene(width, height) {
    const words = new Uint16Array(width * height);
    const levels = [
        [0.9, 0.5, 0.5, 0.3],
        [0.3, 0.6, 0.6, 0.8],
    ];
    for (let y = 0; y < height; y++) {
        for (let x = 0; x < width; x++) {
            const inDisc = Math.hypot(x - width / 2, y - height / 2) < height / 4 || Math.abs(x - y) < 2;
            const shade = 0.25 + 0.6 * (x / width) * (0.5 + 0.5 * Math.cos((6 * y) / height));
            const grain = (Math.imul(x * 7919 + y * 104729, 2654435761) >>> 26) / 2;
            words[y * width + x] = 300 + 3000 * shade * levels[inDisc ? 1 : 0][2 * (y & 1) + (x & 1)] + grain;
        }
    }
    return words;
}

export const bytesOf = (words) => new Uint8Array(words.buffer, words.byteOffset, words.byteLength);
