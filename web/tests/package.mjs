// The package as built, and what tests share.
import { pathToFileURL } from 'node:url';
import { join } from 'node:path';

export const folder = process.env.KRO_PACKAGE ?? new URL('../../build/wasm/web/package', import.meta.url).pathname;
export const { load, hasVectors } = await import(pathToFileURL(join(folder, 'kro.js')));
export const moduleNames = { simd128: 'kro.wasm', scalar: 'kro-scalar.wasm' };

// The two modules, each by the name of its instruction set.
export const both = await Promise.all([true, false].map((vectors) => load({ vectors })));

// Bytes that look like nothing, the same each time.
export function noise(length, seed = 1) {
    const bytes = new Uint8Array(length);
    let state = seed;
    for (let i = 0; i < length; i++) {
        state = (Math.imul(state, 1664525) + 1013904223) | 0;
        bytes[i] = state >>> 24;
    }
    return bytes;
}
