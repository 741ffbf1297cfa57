// The package as npm makes and installs it, and its types as TypeScript reads them.
import { strict as assert } from 'node:assert';
import { execFileSync, spawnSync } from 'node:child_process';
import { mkdtemp, rm, writeFile } from 'node:fs/promises';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { after, before, test } from 'node:test';

const packageFolder = resolve(process.env.KRO_PACKAGE ?? '../../build/wasm/web/package');
const compiler = createRequire(import.meta.url).resolve('typescript/lib/tsc.js');

let project;
let packed;
before(async () => {
    project = await mkdtemp(join(tmpdir(), 'kro-installed-'));
    const npm = (...args) =>
        execFileSync('npm', [...args, '--offline', '--no-audit', '--no-fund', '--loglevel=error'], {
            cwd: project,
            encoding: 'utf8',
        });
    [packed] = JSON.parse(npm('pack', packageFolder, '--json'));
    await writeFile(join(project, 'package.json'), '{"type": "module"}');
    npm('install', join(project, packed.filename));
});
after(() => rm(project, { recursive: true }));

test('what is packed', () => {
    assert.deepEqual(packed.files.map(({ path }) => path).sort(), [
        'LICENSE',
        'README.md',
        'formats.d.ts',
        'kro-scalar.wasm',
        'kro.d.ts',
        'kro.js',
        'kro.wasm',
        'package.json',
    ]);
});

async function compiled(name, text) {
    await writeFile(join(project, `${name}.ts`), text);
    const options = ['--strict', '--noEmit', '--target', 'es2022', '--module', 'nodenext', '--lib', 'es2022,dom'];
    const { status, stdout } = spawnSync(process.execPath, [compiler, ...options, `${name}.ts`], {
        cwd: project,
        encoding: 'utf8',
    });
    return { status, stdout };
}

test('types that fit', async () => {
    const { status, stdout } = await compiled(
        'good',
        `import { load, type Kro, type Picture, type FrameFormat } from 'kro';
        const kro: Kro = await load();
        const format: FrameFormat = 'BayerRG12Packed';
        const options = { format, width: 8, height: 6, algorithm: 'edge', output: 'RGBa16', borrow: true } as const;
        const picture: Picture = kro.convert(kro.reserve(options), options);
        const first: number | undefined = picture.planes[0]?.[0];
        console.log(first, kro.formats.map(({ name, bits }) => name + bits), kro.rowBytes('RGB8', 7));`,
    );
    assert.equal(stdout, '');
    assert.equal(status, 0);
});

test('types that do not', async () => {
    const { stdout } = await compiled(
        'bad',
        `import { load } from 'kro';
        const kro = await load();
        kro.convert(new Uint8Array(48), { format: 'RGB8', width: 8, height: 6 });
        kro.convert(new Uint8Array(48), { format: 'BayerRG8', width: '8', height: 6 });
        kro.convert([1, 2], { format: 'BayerRG8', width: 8, height: 6 });
        kro.convert(new Uint8Array(48), { format: 'BayerRG8', width: 8, height: 6, algorithm: 'best' });`,
    );
    const lines = [...stdout.matchAll(/^bad\.ts\((\d+),/gm)].map(([, line]) => Number(line));
    assert.deepEqual(lines, [3, 4, 5, 6]);
});
