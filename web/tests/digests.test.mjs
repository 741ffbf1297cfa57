// The digests of kro selftest, which come from a per-pixel reference: of both tables of kernels, and of pictures of
// views that the package's own modules make.
import { strict as assert } from 'node:assert';
import { readFile, mkdtemp, open, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { WASI } from 'node:wasi';

import { folder, moduleNames } from './package.mjs';

const digests = await WebAssembly.compile(await readFile(process.env.KRO_DIGESTS));
const expected = (await readFile(new URL('../../tools/kro/selftest/digests.def', import.meta.url), 'utf8')).match(
    /^KRO_DIGEST/gm,
).length;

async function run(argument, convertView) {
    const temporary = await mkdtemp(join(tmpdir(), 'kro-digests-'));
    const output = await open(join(temporary, 'out'), 'w+');
    try {
        const wasi = new WASI({
            version: 'preview1',
            args: ['digests', argument],
            stdout: output.fd,
            stderr: output.fd,
            returnOnExit: true,
        });
        const instance = await WebAssembly.instantiate(digests, {
            wasi_snapshot_preview1: wasi.wasiImport,
            kro: { convertView: (...records) => convertView(instance.exports.memory, ...records) },
        });
        const status = wasi.start(instance);
        return { status, text: await readFile(join(temporary, 'out'), 'utf8') };
    } finally {
        await output.close();
        await rm(temporary, { recursive: true });
    }
}

for (const table of Object.keys(moduleNames)) {
    test(`the table ${table}`, async () => {
        const { status, text } = await run(table);
        assert.equal(text, `${table}: ${expected} digests, 0 differ\n`);
        assert.equal(status, 0);
    });
}

// A module whose memory holds that of the digests' module as a whole, so that every address is the same in both but
// for a distance.
class Mirror {
    constructor(instance) {
        this.exports = instance.exports;
        this.start = Math.ceil(instance.exports.__heap_base.value / 65536) * 65536;
        this.calls = 0;
    }

    convertView(memory, source, picture, options) {
        const own = this.exports.memory;
        const missing = this.start + memory.buffer.byteLength - own.buffer.byteLength;
        if (missing > 0) {
            own.grow(Math.ceil(missing / 65536));
        }
        const copy = new Uint8Array(own.buffer, this.start, memory.buffer.byteLength);
        copy.set(new Uint8Array(memory.buffer));
        const words = new Uint32Array(own.buffer, this.start);
        words[source / 4] += this.start;
        for (let plane = 0; plane < 4; plane++) {
            words[picture / 4 + plane] += words[picture / 4 + plane] === 0 ? 0 : this.start;
        }
        const status = this.exports.kroConvertView(this.start + source, this.start + picture, this.start + options);
        // What was moved goes back, and with it what the call has written.
        words[source / 4] -= this.start;
        for (let plane = 0; plane < 4; plane++) {
            words[picture / 4 + plane] -= words[picture / 4 + plane] === 0 ? 0 : this.start;
        }
        new Uint8Array(memory.buffer).set(copy);
        this.calls++;
        return status;
    }
}

for (const [set, name] of Object.entries(moduleNames)) {
    test(`views by ${name}`, async () => {
        const { instance } = await WebAssembly.instantiate(await readFile(join(folder, name)));
        const mirror = new Mirror(instance);
        const { status, text } = await run('package', (...call) => mirror.convertView(...call));
        assert.equal(text, `package: ${expected} digests, 0 differ\n`, set);
        assert.equal(status, 0);
        assert.ok(mirror.calls > 5000, `${mirror.calls} calls`);
    });
}
