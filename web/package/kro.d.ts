import type { FrameFormat, PictureFormat } from './formats.js';

export type { FrameFormat, PictureFormat };

/** How missing colours are made: copied, averaged, or along the edges of the picture. */
export type Algorithm = 'nearest' | 'bilinear' | 'edge' | 'fine';

/** How to read a frame, and what to make of it. */
export interface ConvertOptions {
    /** Layout of the samples, by its PFNC (or, of CSI-2 packings, V4L2) name. */
    format: FrameFormat;
    /** Samples in a row, 4 or more. */
    width: number;
    /** Rows, 4 or more. */
    height: number;
    /** Default: edge; fine is nearer to the scene and slower. Grey frames know none. */
    algorithm?: Algorithm;
    /** Default: RGBa8, which ImageData takes. */
    output?: PictureFormat;
    /** Bytes from a row to the next, negative where row 0 is the last in memory. Default: rows without gaps. */
    stride?: number;
    /** Bytes from a row of the picture to the next. Default: rows without gaps. */
    outputStride?: number;
    /** Significant bits of samples in words, 8 to 16. Default: the format's own. */
    bits?: number;
    /** Words have their high byte first. */
    bigEndian?: boolean;
    /** The significant bits are a word's high ones. */
    leftAligned?: boolean;
    /** 16-bit pictures use all 16 bits, however few the samples have. */
    fullRange?: boolean;
    /** The fourth channel, 0 to 255, of 16-bit pictures 0 to 65535. Default: opaque. */
    alpha?: number;
    /** Only rows from here on are made. Default: 0. */
    firstRow?: number;
    /** So many of them. Default: all. */
    rowCount?: number;
    /** Where the picture goes. Default: memory of its own. */
    into?: ArrayBuffer | SharedArrayBuffer | ArrayBufferView;
    /** The picture of a whole frame is not copied out of the module's memory; it lasts until the next call. */
    borrow?: boolean;
}

export interface Picture {
    /** Uint8Array for pictures of 8 bits, Uint16Array for those of 16. */
    data: Uint8Array | Uint16Array;
    /** The planes of planar formats, in the order of the format's name; of others data alone. */
    planes: (Uint8Array | Uint16Array)[];
    width: number;
    /** Rows in data. */
    height: number;
    /** Bytes from a row to the next. */
    stride: number;
    format: PictureFormat;
}

export interface Format {
    name: FrameFormat | PictureFormat;
    /** PFNC's code, V4L2's four letters, or the library's own. */
    code: number;
    /** Of a sample. */
    bits: number;
    isFrame: boolean;
    /** Formats of frames with the same layout have the same number. */
    layout: number;
    /** Samples lie in 16-bit words. */
    inWords: boolean;
    /** The first two samples of a mosaic's first row: RG, GR, GB or BG. Empty for grey. */
    sites: '' | 'RG' | 'GR' | 'GB' | 'BG';
    isPicture: boolean;
    /** Of a picture; 0 where it is none. */
    planes: number;
}

export interface Kro {
    /** simd128 or scalar. */
    readonly instructionSet: string;
    readonly algorithms: readonly Algorithm[];
    readonly formats: readonly Format[];
    readonly frameFormats: readonly FrameFormat[];
    readonly pictureFormats: readonly PictureFormat[];

    /**
     * Turns the samples of a frame into a picture. Bytes beyond the frame are not looked at. Throws a TypeError or a
     * RangeError that names the argument, what came and what was expected; nothing has been written then.
     */
    convert(bytes: ArrayBuffer | SharedArrayBuffer | ArrayBufferView, options: ConvertOptions): Picture;

    /**
     * Makes room for such frames and gives the place in the module's memory that convert() reads without a copy. It
     * lasts until a call needs more room.
     */
    reserve(options: ConvertOptions): Uint8Array;

    /** Bytes that convert() needs for such a frame. */
    frameBytes(options: ConvertOptions): number;

    /** Bytes of a row of so many samples or pixels (of one plane): the smallest stride. */
    rowBytes(format: FrameFormat | PictureFormat, width: number): number;
}

export interface LoadOptions {
    /** The module, instead of the file beside kro.js. */
    wasm?: WebAssembly.Module | BufferSource | URL | string;
    /** Take kro.wasm, or kro-scalar.wasm. Default: what the engine runs. */
    vectors?: boolean;
}

/** Loads the module. Each call gives an instance with memory of its own. */
export function load(options?: LoadOptions): Promise<Kro>;

/** Whether this engine runs kro.wasm; load() takes kro-scalar.wasm where not. */
export function hasVectors(): boolean;
