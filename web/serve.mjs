// A folder on this machine's loopback address.
//     node serve.mjs FOLDER [PORT]
import { createReadStream } from 'node:fs';
import { stat } from 'node:fs/promises';
import { createServer } from 'node:http';
import { extname, join, resolve, sep } from 'node:path';
import { pathToFileURL } from 'node:url';

const types = {
    '.html': 'text/html; charset=utf-8',
    '.css': 'text/css; charset=utf-8',
    '.js': 'text/javascript; charset=utf-8',
    '.json': 'application/json',
    '.wasm': 'application/wasm',
};

async function answer(folder, request, response) {
    const { pathname } = new URL(`http://localhost${request.url}`);
    const path = join(folder, decodeURIComponent(pathname.endsWith('/') ? `${pathname}index.html` : pathname));
    const found = path.startsWith(folder + sep) ? await stat(path).catch(() => undefined) : undefined;
    if (!found?.isFile()) {
        response.writeHead(404, { 'Content-Type': 'text/plain' }).end('not found\n');
        return;
    }
    response.writeHead(200, {
        'Content-Type': types[extname(path)] ?? 'application/octet-stream',
        'Content-Length': found.size,
        'Cache-Control': 'no-cache',
    });
    createReadStream(path).pipe(response);
}

/** A server of a folder, and its address. Port 0: any that is free. */
export async function serve(folder, port = 0) {
    const root = resolve(folder);
    const server = createServer((request, response) => {
        answer(root, request, response).catch(() => response.writeHead(400).end());
    });
    await new Promise((done, failed) => server.once('error', failed).listen(port, '127.0.0.1', done));
    return { server, address: `http://127.0.0.1:${server.address().port}/` };
}

if (process.argv[1] && import.meta.url === pathToFileURL(process.argv[1]).href) {
    const [folder, port = 0] = process.argv.slice(2);
    try {
        const { address } = await serve(folder, Number(port));
        console.log(address);
    } catch (error) {
        console.error(`serve: port ${port}: ${error.code === 'EADDRINUSE' ? 'somebody else has it' : error.message}`);
        process.exitCode = 1;
    }
}
