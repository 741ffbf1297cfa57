// How fast the package is beside plain loops, in turns, and what copies cost.
//     node bench.mjs PACKAGE_FOLDER [WIDTH HEIGHT ROUNDS]
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';

import * as plain from './plain.mjs';

const [folder, width = 2592, height = 1944, rounds = 25] = process.argv
    .slice(2)
    .map((x, i) => (i === 0 ? x : Number(x)));
const { load } = await import(pathToFileURL(join(resolve(folder), 'kro.js')));
const modules = [await load({ vectors: true }), await load({ vectors: false })];

const samples = Uint8Array.from(
    { length: width * height },
    (_, i) => 128 + 90 * Math.sin(i / 37) + ((i * 2654435761) >>> 27),
);
const pixels = new Uint8Array(3 * samples.length);

function candidates(algorithm) {
    const options = { format: 'BayerRG8', width, height, algorithm, output: 'RGB8' };
    const list = [['plain JavaScript', () => plain[algorithm](samples, width, height, pixels)]];
    for (const kro of modules) {
        const place = kro.reserve(options);
        list.push([
            `${kro.instructionSet}, in the module's memory`,
            () => {
                if (place[0] !== samples[0]) {
                    place.set(samples);
                }
                return kro.convert(place, { ...options, borrow: true }).data;
            },
        ]);
        list.push([
            `${kro.instructionSet}, copied in and out`,
            () => kro.convert(samples, { ...options, into: pixels }).data,
        ]);
        list.push([`${kro.instructionSet}, into a new picture`, () => kro.convert(samples, options).data]);
    }
    return list;
}

for (const algorithm of ['bilinear', 'edge']) {
    const list = candidates(algorithm).map(([name, run]) => ({ name, run, best: Infinity }));
    const right = Uint8Array.from(list[0].run());
    for (let round = 0; round < rounds; round++) {
        for (const candidate of list) {
            const start = performance.now();
            const made = candidate.run();
            candidate.best = Math.min(candidate.best, performance.now() - start);
            if (round === 0 && Buffer.compare(made, right) !== 0) {
                throw new Error(`${candidate.name}: other bytes than the plain loops`);
            }
        }
    }
    console.log(`${algorithm}, ${width}x${height} BayerRG8 to RGB8, best of ${rounds}`);
    for (const { name, best } of list) {
        const times = (list[0].best / best).toFixed(1);
        console.log(`  ${name.padEnd(36)} ${best.toFixed(2).padStart(8)} ms ${times.padStart(6)} x`);
    }
}
