// Writes formats.d.ts: the names of all formats, as the module in a folder says them.
//     write-types.mjs PACKAGE_FOLDER
import { writeFile } from 'node:fs/promises';
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';

const folder = resolve(process.argv[2]);
const { load } = await import(pathToFileURL(join(folder, 'kro.js')));
const kro = await load();
const union = (names) => names.map((name) => `\n    | '${name}'`).join('');
await writeFile(
    join(folder, 'formats.d.ts'),
    `// Written by the build from the library's own list.

/** Formats of frames. */
export type FrameFormat =${union(kro.frameFormats)};

/** Formats of pictures. */
export type PictureFormat =${union(kro.pictureFormats)};
`,
);
