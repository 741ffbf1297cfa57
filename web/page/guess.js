// kro-guess.wasm: what a raw file can be, by the command's rules.

const encoder = new TextEncoder();
const decoder = new TextDecoder();

function instantiate(module) {
    const imports = {};
    for (const { module: from, name } of WebAssembly.Module.imports(module)) {
        imports[from] ??= {};
        imports[from][name] = () => 0; // what the C library would write to is nobody's
    }
    const { exports } = new WebAssembly.Instance(module, imports);
    exports._initialize();
    return exports;
}

function put(exports, address, bytes) {
    new Uint8Array(exports.memory.buffer).set(bytes, address);
}

function textAt(exports, address) {
    const memory = new Uint8Array(exports.memory.buffer);
    return decoder.decode(memory.slice(address, memory.indexOf(0, address)));
}

/** Loads the module; each question gets an instance of its own, since one that has thrown is not used again. */
export async function guesser(url) {
    const response = await fetch(url);
    if (!response.ok) {
        throw new Error(`${url} cannot be loaded: ${response.status} ${response.statusText}`);
    }
    const module = await WebAssembly.compile(await response.arrayBuffer());
    return {
        /** What the name says together with the length, or nothing. */
        byName(name, length) {
            const exports = instantiate(module);
            const bytes = encoder.encode(name);
            put(exports, exports.nameAt(bytes.length), bytes);
            try {
                return JSON.parse(textAt(exports, exports.byName(length)));
            } catch (error) {
                if (error instanceof WebAssembly.RuntimeError) {
                    return undefined;
                }
                throw error;
            }
        },
        /** What the bytes can be, best first. */
        byBytes(bytes, length) {
            const exports = instantiate(module);
            put(exports, exports.bytesAt(bytes.length), bytes);
            return JSON.parse(textAt(exports, exports.byBytes(length)));
        },
    };
}
