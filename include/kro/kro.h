/* kro: raw camera frames to displayable images.
 *
 * A frame of a single-sensor colour camera (a Bayer mosaic) or of a grey camera, 8 to 16 bits a sample, packed or
 * not, becomes an 8-bit picture in one call: kroDemosaicing. Two further families, called directly, turn 16-bit
 * mosaics into 16-bit pictures: kroDemosaicingBilinearU16 and demosaicingEdge...U16. Every kernel in between is
 * exported too.
 *
 *     void convert(void* samples) {  // 960 rows of 1280 words, 12 bits used
 *         uint32_t format = KRO_RGB8;
 *         KroContext* handle = NULL;
 *         KroImage frame = {960, 1280, KRO_BAYER_RG12, samples};
 *         KroImage picture = {0, 0, 0, malloc((size_t)960 * 1280 * 3)};
 *         int32_t status = kroCreate(&handle);
 *         if (status == KRO_OK) status = kroDemosaicSetConfig(handle, &format);
 *         if (status == KRO_OK) status = kroDemosaicing(handle, &frame, KRO_EDGE, &picture);  // each frame
 *         if (status == KRO_OK) show(&picture);
 *         if (handle != NULL) kroRelease(&handle);
 *         free(picture.data);
 *     }
 *
 * PROMISE
 *   No bytes, sizes, formats, algorithms, strides, bands or misaligned pointers that pass the documented checks make
 *   kro read or write outside the stated buffers, use more than the stated stack, invoke undefined behaviour, throw,
 *   abort or leave a byte that the contract promises unwritten; an error leaves output and descriptor untouched, but
 *   where a function's comment says so. Functions that check nothing promise it for the arguments they state.
 *
 * RETURN CODES
 *   Functions that check their arguments return 0 (KRO_OK) or one negative KRO_ERR_... code and report nothing
 *   else: no log, no exception, no error state. Checks run in a fixed order, stated with each function: null
 *   pointers, then sizes, then formats. A call that fails a check has written nothing, except where its comment
 *   says so. Kernels check nothing and trust their arguments: those that return int32_t or uint32_t always return
 *   0. They serve every height and width of 4 or more.
 *
 * BUFFER SIZES
 *   Buffers are the caller's: never allocated, kept or freed by the library, never tested for size. Rows follow each
 *   other without gaps. With n = height x width, in bytes:
 *
 *     input frame                               bytes             layout
 *     Mono8, Bayer..8                           n                 one byte a sample
 *     Mono10/12/14/16, Bayer..10/12/16          2 n               one word of the machine a sample, the value in
 *                                                                 its low 10, 12, 14 or 16 bits
 *     Mono10/12Packed, Bayer..10/12Packed       3 ((n + 1) / 2)   two samples in a group of three bytes: high
 *                                                                 bits of the first, low bits of both, high
 *                                                                 bits of the second
 *
 *     output picture                            bytes             layout
 *     Mono8                                     n                 one byte a pixel
 *     BGR8, RGB8                                3 n               three bytes a pixel
 *     BGRa8, RGBa8                              4 n               four bytes a pixel, alpha last
 *     RGB8Planar, planar BGR                    3 n               three planes of n bytes, one after the other
 *     16-bit families, interleaved              6 n               words B, G, R
 *     16-bit families, planar                   2 n a plane       three planes, each by its own pointer
 *
 *   Packed groups run continuously over the whole frame: with an odd width a row may begin within a group. An odd n
 *   leaves half of the last group unused, yet the buffer holds that group whole: 33 samples take 51 bytes.
 *   No buffer needs more alignment than its sample type.
 *
 * DETERMINISM
 *   The same input gives the same bytes on every processor and instruction set, in 32 and 64 bits, from every
 *   compiler. All arithmetic is integer. Each call chooses its code by what the processor can do, a pure function
 *   of the compiler runtime's CPU record: no environment variable, no setting, no state. Where results depend on
 *   blocks of columns (see KEPT AS THEY ARE), these blocks are part of the result and not the vector width in use.
 *
 * THREADS
 *   There is no global state and no lock, and no thread is started: work is done on the caller's thread before the
 *   call returns. One handle serves one thread at a time; different handles share nothing. Functions without a
 *   handle are re-entrant: calls on different buffers may run at the same time.
 *
 * STACK
 *   No call needs more than 20 KiB of stack (21 on s390x).
 *
 * ALIASING
 *   Source and destination, and the planes of a planar destination, must not overlap. kroBMPAdjust alone works in
 *   place. Region routines of one picture write disjoint rectangles (16-bit edge: some overlap, with equal values).
 *
 * ALPHA
 *   The fourth byte of BGRa8 and RGBa8 is 0, never 255, from the nearest-neighbour and bilinear kernels,
 *   mono8Convert and bgrToBgra. The edge-directed kernels write it, as 0, only where the blocks of 16 columns of
 *   their row-pair steps write: columns 1 to 16 k, with k = (width - 4) / 16, of rows 1 to 2 ((height - 4) / 2) of
 *   RG and BG frames and of rows 2 to 1 + 2 ((height - 5) / 2) of GR and GB frames (divisions round down). All
 *   other alpha bytes, so the four edges and the whole of pictures below 20 columns or 6 rows (7 for GR and GB),
 *   stay as the caller left them: fill the buffer first where a defined alpha is wanted.
 *
 * ROUNDING
 *   Means truncate: (a + b) >> 1, (a + b + c + d) >> 2, arithmetic shifts that floor where sums are signed. Nothing
 *   is rounded but luma: (77 R + 150 G + 29 B + 128) >> 8. These are the BT.601 weights 0.299, 0.587, 0.114 in
 *   256ths; they sum to 256, so white stays 255. Whatever the phase, red counts 77 and blue 29.
 *
 * BORDERS
 *   Every pixel is written. A border pixel has the inner formula on the mosaic mirrored about its edge samples: row
 *   -1 is row 1, row height is row height - 2, columns alike, which keeps the colours in their places. In the edge
 *   family the colour differences mirror likewise. Exceptions:
 *     nearest    at a red or blue site of column 0 green comes from above, in every row but row 0
 *     bilinear   8 bits, GR and GB frames of odd width W: green of (0, W-2) takes sample (0, 0) where the rule has
 *                (0, W-3); the colour that row 0 holds takes, at (1, W-2) and (1, W-1), sample (2, 1) where the
 *                rule has (2, W-2)
 *     edge       16 bits: a far sample (two away, of the same colour) that lies outside is replaced by the opposite
 *                one, so that the second difference is one-sided and doubled
 *
 * KEPT AS THEY ARE
 *   Hosts rely on these; they do not change:
 *     - kroDemosaicing and the Bayer converters with an unknown algorithm write no pixel and return 0; kroDemosaicing
 *       then fills in the output descriptor all the same.
 *     - The size test looks at the sign of height x width in 32-bit arithmetic, which wraps: 65536 x 65536 passes.
 *     - A frame whose scratch need does not fit into 31 bits gets KRO_ERR_NO_MEMORY, with nothing touched.
 *     - u16Tou8 saturates in whole blocks of 16 samples and truncates in the rest; shift 8 always takes the high
 *       byte. Samples within their bit depth cannot tell.
 *     - unpacked with an odd count writes one byte more than the count.
 *     - swapRB of the bilinear regions exchanges red and blue for the value 1 only; swap of the nearest and edge
 *       kernels for any value but 0.
 *     - 16-bit bilinear wraps where its inner part works in blocks of 8 columns: sums are taken modulo 65536 and
 *       shifted as signed words there. Samples of up to 13 bits cannot tell; two-sample means are right up to 14
 *       bits. Those columns write B, G, R even where the order flag asks for R, G, B.
 *     - demosaicingEdgeRGGBU16 ends interpolated samples at 4095, the other three phases at 65535. A pixel's own
 *       sample is never clamped.
 *     - The reserved fields of KroContext have fixed defaults and are read by nothing.
 *
 * LARGE FRAMES
 *   Offsets and plane distances are of pointer size, so in 64 bits frames and pictures may exceed 2 and 4 GiB. Only
 *   the size test above and the counts of u16Tou8 and unpacked are the low 32 bits of height x width, as a signed
 *   number.
 */
#ifndef KRO_KRO_H
#define KRO_KRO_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define KRO_API __attribute__((visibility("default")))
#else
#define KRO_API
#endif

/* The version of this header and of the library it came with. */
#define KRO_VERSION_MAJOR 0
#define KRO_VERSION_MINOR 1
#define KRO_VERSION_PATCH 0

/* ---- status codes ----
 * FORMAT         the input format is none of the input formats below
 * SIZE           height or width is 3 or less, or their product is negative in 32-bit arithmetic
 * OUTPUT_FORMAT  the format asked for is none of the output formats below
 * NULL           a pointer that must not be null is
 * NO_MEMORY      an allocation failed, or the scratch need does not fit into 31 bits
 */
#define KRO_OK 0
#define KRO_ERR_FORMAT (-102)
#define KRO_ERR_SIZE (-104)
#define KRO_ERR_OUTPUT_FORMAT (-107)
#define KRO_ERR_NULL (-111)
#define KRO_ERR_NO_MEMORY (-117)

/* ---- algorithms ----
 * NEAREST   each missing colour is copied from the 2 x 2 block of the pixel, its left, upper and upper left neighbour
 * BILINEAR  the truncated mean of the two or four nearest samples of each missing colour
 * EDGE      green along the direction of the smaller gradient, red and blue from colour differences
 * Any other value is no error: nothing is written and the call succeeds.
 */
typedef int32_t KroAlgorithm;
#define KRO_NEAREST 0
#define KRO_BILINEAR 1
#define KRO_EDGE 2

/* ---- pixel formats ----
 * Codes of the GenICam Pixel Format Naming Convention (PFNC). Bits 16 to 23 of a code are the bits a pixel occupies.
 * GR, RG, GB, BG are the first two samples of row 0. MONO8 is an input and an output format, all other MONO and all
 * BAYER codes are input formats, the rest are output formats.
 */
#define KRO_MONO8 0x01080001u
#define KRO_MONO10 0x01100003u
#define KRO_MONO10_PACKED 0x010C0004u
#define KRO_MONO12 0x01100005u
#define KRO_MONO12_PACKED 0x010C0006u
#define KRO_MONO14 0x01100025u
#define KRO_MONO16 0x01100007u
#define KRO_BAYER_GR8 0x01080008u
#define KRO_BAYER_RG8 0x01080009u
#define KRO_BAYER_GB8 0x0108000Au
#define KRO_BAYER_BG8 0x0108000Bu
#define KRO_BAYER_GR10 0x0110000Cu
#define KRO_BAYER_RG10 0x0110000Du
#define KRO_BAYER_GB10 0x0110000Eu
#define KRO_BAYER_BG10 0x0110000Fu
#define KRO_BAYER_GR12 0x01100010u
#define KRO_BAYER_RG12 0x01100011u
#define KRO_BAYER_GB12 0x01100012u
#define KRO_BAYER_BG12 0x01100013u
#define KRO_BAYER_GR16 0x0110002Eu
#define KRO_BAYER_RG16 0x0110002Fu
#define KRO_BAYER_GB16 0x01100030u
#define KRO_BAYER_BG16 0x01100031u
#define KRO_BAYER_GR10_PACKED 0x010C0026u
#define KRO_BAYER_RG10_PACKED 0x010C0027u
#define KRO_BAYER_GB10_PACKED 0x010C0028u
#define KRO_BAYER_BG10_PACKED 0x010C0029u
#define KRO_BAYER_GR12_PACKED 0x010C002Au
#define KRO_BAYER_RG12_PACKED 0x010C002Bu
#define KRO_BAYER_GB12_PACKED 0x010C002Cu
#define KRO_BAYER_BG12_PACKED 0x010C002Du
#define KRO_RGB8 0x02180014u
#define KRO_BGR8 0x02180015u
#define KRO_RGBA8 0x02200016u
#define KRO_BGRA8 0x02200017u
#define KRO_RGB8_PLANAR 0x02180021u
#define KRO_BGR8_PLANAR 0x02180025u

/* ---- records ---- */
/* A frame or a picture. Rows follow each other without gaps; BUFFER SIZES says how many bytes `data` holds. Record
 * and buffer belong to the caller; the library keeps neither beyond a call. */
typedef struct KroImage {
    int32_t height;       /* rows */
    int32_t width;        /* pixels in a row */
    uint32_t pixelFormat; /* PFNC code */
    void* data;           /* the first sample of row 0 */
} KroImage;

/* A buffer that only grows. Its contents mean nothing from one call to the next. */
typedef struct KroScratch {
    void* data;       /* from malloc, or null */
    int32_t capacity; /* bytes in data; 0 where data is null */
} KroScratch;

/* The handle, owned by the library between kroCreate and kroRelease. Change outputFormat by kroDemosaicSetConfig,
 * which checks it. The reserved fields are read by nothing. 13 words in 32 bits, 64 bytes in 64. */
typedef struct KroContext {
    uint32_t outputFormat;        /* PFNC code of the pictures; KRO_BGR8 at first */
    int32_t reservedA;            /* 12 */
    int32_t reservedB;            /* 1 */
    int32_t reservedTriple[2][3]; /* 0, 8, 1 twice */
    int32_t reservedC;            /* 0, from kroCreate alone */
    int32_t reservedD;            /* 0, from kroCreate alone */
    KroScratch scratch;           /* working memory of kroDemosaicing */
} KroContext;

/* What an inner region routine left to the borders. The two numbers depend on the routine:
 *   8-bit bilinear bodies   first row not covered, first column not covered
 *   16-bit bilinear bodies  first column not covered, first row not covered
 *   edgeSecRGGBU16          first column after the covered ones, number of rows covered */
typedef struct KroCoverage {
    int32_t first;
    int32_t second;
} KroCoverage;

/* ---- handle and configuration ---- */

/* Allocates a handle with the defaults of kroInit and stores it in *handleOut.
 * Returns KRO_ERR_NULL (handleOut null; nothing written), KRO_ERR_NO_MEMORY (*handleOut is null then), KRO_OK. */
KRO_API int32_t kroCreate(KroContext** handleOut);

/* Frees the handle *handle and its scratch buffer and sets *handle to null. *handle itself is not tested: it must
 * be a live handle. Returns KRO_ERR_NULL (handle null), KRO_OK. */
KRO_API int32_t kroRelease(KroContext** handle);

/* Sets defaults in fresh memory: output format KRO_BGR8, reserved 12, 1 and twice 0, 8, 1, scratch empty. reservedC
 * and reservedD are left. Checks nothing. A scratch buffer that the record owns is dropped, not freed. */
KRO_API void kroInit(KroContext* handle);

/* Makes sure that *scratch, which must not be null, has room for `size` bytes. Where it has not, the old buffer is
 * freed and another of exactly `size` bytes takes its place; contents are not kept. A size of 0 or below changes
 * nothing.
 * Returns KRO_ERR_NO_MEMORY (the scratch is empty then), KRO_OK. */
KRO_API int32_t kroMemRealloc(KroScratch* scratch, int32_t size);

/* Stores the handle's output format in *formatOut.
 * Returns KRO_ERR_NULL (formatOut or handle null; nothing written), KRO_OK. */
KRO_API int32_t kroDemosaicGetConfig(const KroContext* handle, uint32_t* formatOut);

/* Makes *formatIn the handle's output format: KRO_RGB8, KRO_BGR8, KRO_BGRA8, KRO_RGBA8, KRO_BGR8_PLANAR,
 * KRO_RGB8_PLANAR or KRO_MONO8. May be called between any two frames.
 * Returns KRO_ERR_NULL (formatIn or handle null), KRO_ERR_OUTPUT_FORMAT (the format stays as it was), KRO_OK. */
KRO_API int32_t kroDemosaicSetConfig(KroContext* handle, const uint32_t* formatIn);

/* ---- the main entry ---- */

/* Converts one frame to the handle's output format.
 *
 *   input   any input format; height x width samples at input->data, which are only read
 *   output  `data` points to a buffer for height x width pixels of the output format (BUFFER SIZES). The other fields
 *           are results: after success they hold the input's height and width and the handle's output format
 *
 * Deeper and packed samples are reduced to their eight high bits first. The handle's scratch buffer grows to width
 * + 64 bytes for 8-bit formats and to (height + 1) x width + 64 bytes for all others, and never shrinks: frames of
 * one size allocate once.
 *
 * Returns, in this order of checks; but for KRO_OK neither the output record nor its buffer is written:
 *   KRO_ERR_NULL           input, handle, output, input->data or output->data is null
 *   KRO_ERR_SIZE           input->height or input->width is 3 or less, or their product, wrapped to 32 bits, negative
 *   KRO_ERR_FORMAT         input->pixelFormat is no input format
 *   KRO_ERR_NO_MEMORY      the scratch size exceeds 2^31 - 1 (scratch untouched) or cannot be had (scratch empty)
 *   KRO_ERR_OUTPUT_FORMAT  the record's outputFormat was set by hand to something else
 *   KRO_OK                 also for an unknown algorithm, which writes no pixel but fills in the output record
 * Grey input knows no algorithm: any value will do. */
KRO_API int32_t kroDemosaicing(KroContext* handle, const KroImage* input, KroAlgorithm algorithm, KroImage* output);

/* ---- input normalisation ---- */

/* Looks up input->pixelFormat, the only field read: *normalisedFormat becomes the 8-bit format of its phase, or
 * KRO_MONO8, and *preConversion how to get there: 0 nothing to do, 2, 4, 6 or 8 the shift for u16Tou8 (the bits of
 * the format less eight), -1 unpacked. The handle is not used and may be null; the other pointers are not tested.
 * Returns KRO_ERR_FORMAT (no input format: the results are the format as it came and 0), KRO_OK. */
KRO_API int32_t demosaicDataInit(const KroImage* input, KroContext* handle, uint32_t* normalisedFormat,
                                 int32_t* preConversion);

/* Words to bytes, as one run of n samples, n being the low 32 bits of height x width as a signed number (0 or below:
 * nothing is done). Source n words, destination n bytes.
 * With a shift of 0 to 7 the samples of whole blocks of 16 are taken as signed words, shifted arithmetically and
 * saturated to 0..255; the n modulo 16 samples at the end, and all samples with a shift of 8 or more, are taken as
 * unsigned words and give the low byte of the shifted word. Both agree for samples within their bit depth. */
KRO_API void u16Tou8(const uint16_t* source, int32_t height, int32_t width, uint32_t shift, uint8_t* destination);

/* Packed samples to bytes, as one run of n samples, counted as in u16Tou8: bytes 0 and 2 of every group of three,
 * which hold the high bits in the 10- and in the 12-bit layout alike. Source 3 ((n + 1) / 2) bytes; destination n
 * bytes, one more if n is odd: the last group's second sample is written too. */
KRO_API void unpacked(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);

/* ---- converters of one frame ----
 * An 8-bit frame of the phase in the name (mono8Convert: grey) to an output format. Source n = height x width
 * bytes; destination as BUFFER SIZES says, planes n bytes apart. Pointers and sizes are not tested: height and
 * width are 4 or more. `workingMemory` is there for callers that provide `width` bytes of it where the edge family
 * writes planes or Mono8; it is not touched and may be null. BG frames equal the RG frame, GR frames the GB frame of
 * the same samples with red and blue exchanged.
 * Returns KRO_ERR_OUTPUT_FORMAT, whatever the algorithm (nothing written), KRO_OK (an unknown algorithm: nothing
 * written).
 */
KRO_API int32_t rg8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                           int32_t outputFormat, KroAlgorithm algorithm, uint8_t* workingMemory);
KRO_API int32_t gr8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                           int32_t outputFormat, KroAlgorithm algorithm, uint8_t* workingMemory);
KRO_API int32_t gb8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                           int32_t outputFormat, KroAlgorithm algorithm, uint8_t* workingMemory);
KRO_API int32_t bg8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                           int32_t outputFormat, KroAlgorithm algorithm, uint8_t* workingMemory);

/* Grey: Mono8 is a copy, colour has the sample in every channel (alpha 0), planar formats hold three copies. */
KRO_API int32_t mono8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                             int32_t outputFormat);

/* ---- output utilities ---- */

/* Pads the rows of a picture of three bytes a pixel with zeros to a multiple of 4 bytes, as bitmap files want them,
 * in place. image->data holds height x width x 3 bytes of pixels and must have room for height rows of width x 3
 * rounded up to a multiple of 4. pixelFormat is not looked at and the record is not changed; of the handle only
 * null is tested. Nothing is touched where width is a multiple of 4.
 * Returns KRO_ERR_NULL (image, handle or image->data null), KRO_ERR_SIZE (height or width 3 or less), KRO_OK. */
KRO_API int32_t kroBMPAdjust(const KroContext* handle, const KroImage* image);

/* Widens pixels of three bytes to four: the three as they stand, then 0. Source 3 n, destination 4 n bytes, not in
 * place; n = height x width. Checks nothing. */
KRO_API void bgrToBgra(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);

/* ---- kernels: what their names and arguments mean ----
 *
 * Names say phase, output and algorithm: rg8ToBgr8P_nearest takes an RG mosaic of bytes to three planes. A suffix
 * names the region that the routine writes: rows, columns or the inner part (_body). Kernels for a phase serve the
 * phase with red and blue exchanged (RG and BG, GB and GR) with the other channel order, plane order or weights.
 *
 *   source       height x width samples, rows without gaps. Region routines get the first sample of the picture (or
 *                of the view named there), not of their region
 *   destination  Bgr8 three bytes a pixel, Bgra8 four, Mono8 one; likewise from its first pixel
 *   ...Plane     one byte a pixel. redPlane gets the colour of the mosaic's R sites, bluePlane that of its B sites,
 *                as the name's phase has them
 *   swap, swapRB 0 puts bytes B, G, R, 1 puts R, G, B; for other values see KEPT AS THEY ARE. For Mono8 swap
 *                exchanges the weights 77 and 29, for mosaics of the exchanged phase
 *   weights      three luma weights, in the order red, green, blue of the name's phase unless said otherwise;
 *                Y = (w0 R + w1 G + w2 B + 128) >> 8, of which the low byte is stored. 77, 150, 29 is usual
 *
 * P[y][x] below is the sample at row y, column x; H and W are height and width. */

/* ---- nearest-neighbour, 8 bits ----
 * Pixel (y, x) takes its colours from the block of rows y-1, y and columns x-1, x, which holds each colour; row 0
 * takes rows 0, 1 and column 0 columns 0, 1. Red and blue are the block's own. Green is the pixel's own sample at a
 * green site, elsewhere its left neighbour; in column 0 the sample above, and at (0, 0) the one to the right. The
 * entries write the whole picture, every alpha byte as 0, and return 0. */
KRO_API uint32_t rg8ToBgr8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                   int32_t swap);
KRO_API uint32_t gb8ToBgr8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                   int32_t swap);
KRO_API uint32_t rg8ToBgra8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                    int32_t swap);
KRO_API uint32_t gb8ToBgra8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                    int32_t swap);
KRO_API uint32_t rg8ToBgr8P_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* redPlane,
                                    uint8_t* greenPlane, uint8_t* bluePlane);
KRO_API uint32_t gb8ToBgr8P_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* redPlane,
                                    uint8_t* greenPlane, uint8_t* bluePlane);
KRO_API uint32_t rg8ToMono8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                    int32_t swap);
KRO_API uint32_t gb8ToMono8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                    int32_t swap);

/* Row routines, the same for RG and GB frames. `rows` points to row pointers, in this order: the row above, a G/B
 * row, the R/G row below it (_body only). _body writes the output rows of the last two, whole, from row 0 of
 * `output` (or of the planes) on; _lastRows writes one row, that of the G/B row, from it and the row above. They
 * know no row 0. */
KRO_API void rg8ToBgr8_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToBgra8_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToMono8_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToBgr8P_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* redPlane,
                                     uint8_t* greenPlane, uint8_t* bluePlane);
KRO_API void rg8ToBgr8_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToBgra8_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToMono8_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToBgr8P_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* redPlane,
                                         uint8_t* greenPlane, uint8_t* bluePlane);

/* ---- bilinear, 8 bits ----
 * Each missing colour is the truncated mean of the nearest samples of that colour:
 *
 *     at a red or blue site   green (P[y-1][x] + P[y+1][x] + P[y][x-1] + P[y][x+1]) >> 2
 *                             blue or red (P[y-1][x-1] + P[y-1][x+1] + P[y+1][x-1] + P[y+1][x+1]) >> 2
 *     at a green site         the row's colour (P[y][x-1] + P[y][x+1]) >> 1
 *                             the other colour (P[y-1][x] + P[y+1][x]) >> 1
 *
 * with the mosaic mirrored at its edges (and the three values of GR and GB frames of odd width, see BORDERS). Every
 * alpha byte is 0.
 *
 * Entries. They write every pixel and return 0. Bgr8 and Bgra8 have bytes B, G, R; the entry of the phase with red
 * and blue exchanged gives R, G, B: bg8ToBgr8_bilinear of an RG frame is RGB8. */
KRO_API int32_t rg8ToBgr8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t gr8ToBgr8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t gb8ToBgr8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t bg8ToBgr8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t rg8ToBgra8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t gr8ToBgra8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t gb8ToBgra8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t bg8ToBgra8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
/* Planes of an RG frame in the order R, G, B; pass the first and the third exchanged for a BG frame. */
KRO_API int32_t rg8ToBgr8P_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* firstPlane,
                                    uint8_t* secondPlane, uint8_t* thirdPlane);
/* The first plane gets the colour that row 0 holds, the third the other: R, G, B of a GR frame, B, G, R of a GB
 * frame. */
KRO_API int32_t gr8ToBgr8P_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* firstPlane,
                                    uint8_t* secondPlane, uint8_t* thirdPlane);
/* Weights of red, green and blue for an RG frame, of blue, green and red for a BG frame. */
KRO_API int32_t rg8ToMono8_bilinear(const uint8_t* source, int32_t height, int32_t width, const uint32_t* weights,
                                    uint8_t* destination);
/* Weights of the colour that row 0 holds, of green and of the other: 77, 150, 29 for a GR frame, 29, 150, 77 for
 * GB. */
KRO_API int32_t gr8ToMono8_bilinear(const uint8_t* source, int32_t height, int32_t width, const uint32_t* weights,
                                    uint8_t* destination);

/* Regions. With Er = H - 1 - (H & 1) and Ec = W - 1 - (W & 1) they tile a picture without overlap:
 *
 *     region                 rows written      columns written   samples read
 *     rg..._firstRows        0                 0 .. W-1          rows 0 and 1
 *     gr..._firstRows        0 and 1           0 .. W-1          rows 0 to 2
 *     _firstCols             1 .. H-1          0                 columns 0 and 1
 *     _body                  1 .. Er-1         1 .. Ec-1         rows 0 to Er, columns 0 to Ec
 *     _lastRows              Er .. H-1         1 .. Ec-1         rows Er-1 to H-1, columns 0 to Ec
 *     _lastCols              1 .. H-1          Ec .. W-1         columns Ec-1 to W-1
 *
 * They work on an RG view of the mosaic. A BG frame is that view with swapRB 1, with the outer planes or weights
 * exchanged. A GB frame is an RG view from row 1 on, a GR frame a BG view from row 1 on: rows 0 and 1 come from
 * gr..._firstRows, which gets the whole picture, the other regions get source, destination and height of the view,
 * one row down. There is no _firstRows for planes and Mono8: the entries write those rows.
 *
 * The inner part. Returns {Er, Ec}: the first row and the first column that it left, which are the firstBorderRow and
 * firstBorderCol of _lastRows and _lastCols. A view of less than 4 rows (a GR or GB frame of 4) has no inner part:
 * nothing is written and the second number is 0 instead of Ec. */
KRO_API KroCoverage rg8ToBgr8_bilinear_body(const uint8_t* source, uint8_t* destination, int32_t height,
                                            int32_t width, uint32_t swapRB);
KRO_API KroCoverage rg8ToBgra8_bilinear_body(const uint8_t* source, uint8_t* destination, int32_t height,
                                             int32_t width, uint32_t swapRB);
KRO_API KroCoverage rg8ToBgr8P_bilinear_body(const uint8_t* source, uint8_t* redPlane, uint8_t* greenPlane,
                                             uint8_t* bluePlane, int32_t height, int32_t width);
KRO_API KroCoverage rg8ToMono8_bilinear_body(const uint8_t* source, uint8_t* destination, int32_t height,
                                             int32_t width, const uint32_t* weights);

/* The first row, and for GR and GB pictures the first two. In the latter row 0's colour goes to byte 0, the other
 * one to byte 2, or reversed if swapRB is 1: 0 is for B, G, R of a GB frame, 1 for B, G, R of a GR frame. */
KRO_API void rg8ToBgr8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                          uint32_t swapRB);
KRO_API void rg8ToBgra8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                           uint32_t swapRB);
KRO_API void gr8ToBgr8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                          uint32_t swapRB);
KRO_API void gr8ToBgra8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                           uint32_t swapRB);

/* The first column, but for its first row. */
KRO_API void rg8ToBgr8_bilinear_firstCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          uint32_t swapRB);
KRO_API void rg8ToBgra8_bilinear_firstCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                           uint32_t swapRB);
KRO_API void rg8ToBgr8P_bilinear_firstCols(const uint8_t* source, uint8_t* redPlane, uint8_t* greenPlane,
                                           uint8_t* bluePlane, int32_t height, int32_t width);
KRO_API void rg8ToMono8_bilinear_firstCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                           const uint32_t* weights);

/* The last row or two, but for the first column and the last one or two. firstBorderRow is a row with blue samples
 * (in the view), wherever it lies: GR and GB pictures may be passed whole, with the view's firstBorderRow + 1.
 * Nothing is written unless height - firstBorderRow is 1 or 2. */
KRO_API void rg8ToBgr8_bilinear_lastRows(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                         int32_t firstBorderRow, uint32_t swapRB);
KRO_API void rg8ToBgra8_bilinear_lastRows(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          int32_t firstBorderRow, uint32_t swapRB);
KRO_API void rg8ToBgr8P_bilinear_lastRows(const uint8_t* source, uint8_t* redPlane, uint8_t* greenPlane,
                                          uint8_t* bluePlane, int32_t height, int32_t width, int32_t firstBorderRow);
KRO_API void rg8ToMono8_bilinear_lastRows(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          int32_t firstBorderRow, const uint32_t* weights);

/* The last column or two, but for their first row. Nothing is written unless width - firstBorderCol is 1 or 2. */
KRO_API void rg8ToBgr8_bilinear_lastCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                         int32_t firstBorderCol, uint32_t swapRB);
KRO_API void rg8ToBgra8_bilinear_lastCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          int32_t firstBorderCol, uint32_t swapRB);
KRO_API void rg8ToBgr8P_bilinear_lastCols(const uint8_t* source, uint8_t* redPlane, uint8_t* greenPlane,
                                          uint8_t* bluePlane, int32_t height, int32_t width, int32_t firstBorderCol);
KRO_API void rg8ToMono8_bilinear_lastCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          int32_t firstBorderCol, const uint32_t* weights);

/* ---- edge-directed, 8 bits ----
 * Gradient-corrected interpolation along the direction of the smaller gradient, after Hamilton and Adams, in two
 * steps. S is a sample, G a green; shifts floor, every result is clamped to 0..255 before it is used or stored.
 *
 * Green at a red or blue site (y, x), Dh being twice the site's sample less its two neighbours of the same colour
 * in the row, Dv the same in the column:
 *
 *     H = |S(y,x-1) - S(y,x+1)| + |Dh|      V = |S(y-1,x) - S(y+1,x)| + |Dv|
 *     H < V:  ((S(y,x-1) + S(y,x+1)) >> 1) + (Dh >> 2)      else, ties included:
 *             ((S(y-1,x) + S(y+1,x)) >> 1) + (Dv >> 2)
 *
 * Red and blue from the differences K = S - G of the sites of that colour:
 *
 *     at a green site              S + ((K + K) >> 1), of the two sites beside it, or above and below
 *     blue at red, red at blue     G + ((K + K + K + K) >> 2), of the four diagonal sites
 *
 * Samples and differences mirror at the edges of the frame.
 *
 * Entries for RG and GB frames; BG and GR frames are these with the other swap or with redPlane and bluePlane
 * exchanged. They write every pixel (alpha: see ALPHA) and return 0. workingMemory is there for callers that
 * provide `width` bytes; it is not touched and may be null. */
KRO_API int32_t rg8ToBgr8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                               uint32_t swap);
KRO_API int32_t gb8ToBgr8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                               uint32_t swap);
KRO_API int32_t rg8ToBgra8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                uint32_t swap);
KRO_API int32_t gb8ToBgra8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                uint32_t swap);
KRO_API int32_t rg8ToBgr8P_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* redPlane,
                                uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* workingMemory);
KRO_API int32_t gb8ToBgr8P_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* redPlane,
                                uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* workingMemory);
KRO_API int32_t rg8ToMono8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                uint32_t swap, uint8_t* workingMemory);
KRO_API int32_t gb8ToMono8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                uint32_t swap, uint8_t* workingMemory);

/* The row-pair step. It carries an RG picture two rows further:
 *
 *   band      six row pointers, to mosaic rows r .. r+5, r even. Greens of rows r+2 and r+3 are made, whose
 *             neighbourhoods these rows are
 *   output    row r+2 of the picture (each plane's row r+2). Rows r+1, above it, and r+2 are written whole. Of row
 *             r+3 Bgr8, Bgra8 and the green plane get greens in columns 0, 1 and from 16 k + 2 on,
 *             k = (width - 4) / 16; Mono8, which has no place for them, gets nothing. The next step writes that row
 *   greenRow  `width` bytes. Before: at even columns the greens made for the red sites of row r, at odd columns
 *             those for the blue sites of row r+1. After: the same of rows r+2 and r+3. May be the last `width` bytes
 *             of the picture
 *
 * Of Bgra8 alpha is 0 in columns 1 to 16 k of rows r+1 and r+2 and stays what it was elsewhere. Returns 0.
 * Steps depend on each other through greenRow, so one picture takes them one after the other, r = 0, 2, 4 ... while
 * r + 5 < H. The first step finds row 0, green bytes of row 1 and greenRow made by the caller. A GB picture does the
 * same one row down. */
KRO_API int32_t rg8ToBgr8_edge_body(const uint8_t* const* band, int32_t width, uint8_t* output, uint8_t* greenRow,
                                    uint32_t swap);
KRO_API int32_t rg8ToBgra8_edge_body(const uint8_t* const* band, int32_t width, uint8_t* output, uint8_t* greenRow,
                                     uint32_t swap);
KRO_API int32_t rg8ToBgr8P_edge_body(const uint8_t* const* band, int32_t width, uint8_t* redPlane,
                                     uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* greenRow);
KRO_API int32_t rg8ToMono8_edge_body(const uint8_t* const* band, int32_t width, uint8_t* output, uint8_t* greenRow,
                                     uint32_t swap);
/* The bottom of an RG picture of even height (a GB picture of odd height). band points to the last four mosaic
 * rows, r to r+3, output to row r+2 of the picture; greenRow holds what the step before left. Writes rows r+1, r+2
 * and r+3, no alpha byte. greenRow is only read; it may be the last `width` bytes of the picture, which pixels
 * replace. Returns 0. */
KRO_API int32_t rg8ToBgr8_edge_last2Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                         uint8_t* greenRow, uint32_t swap);
KRO_API int32_t rg8ToBgra8_edge_last2Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                          uint8_t* greenRow, uint32_t swap);
KRO_API int32_t rg8ToBgr8P_edge_last2Rows(const uint8_t* const* band, int32_t width, uint8_t* redPlane,
                                          uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* greenRow);
KRO_API int32_t rg8ToMono8_edge_last2Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                          uint8_t* greenRow, uint32_t swap);
/* The bottom of an RG picture of odd height (a GB picture of even height): band points to the last five mosaic
 * rows, r to r+4; writes rows r+1 to r+4. All else is as above. */
KRO_API int32_t rg8ToBgr8_edge_last3Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                         uint8_t* greenRow, uint32_t swap);
KRO_API int32_t rg8ToBgra8_edge_last3Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                          uint8_t* greenRow, uint32_t swap);
KRO_API int32_t rg8ToBgr8P_edge_last3Rows(const uint8_t* const* band, int32_t width, uint8_t* redPlane,
                                          uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* greenRow);
KRO_API int32_t rg8ToMono8_edge_last3Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                          uint8_t* greenRow, uint32_t swap);

/* ---- bilinear, 16 bits ----
 * RG frames of words to words B, G, R, at any bit depth up to 16, without reduction. Formulas, borders and regions
 * are those of the 8-bit family (no marked values: there is no G-first form), in exact 32-bit sums, except in the
 * wrapping columns of the inner part: rows 1 .. Er-1, columns 1 to 8 ((width - 2) / 8) for a width of 10 or more.
 * There a sum of two or four is taken modulo 65536, read as a signed word and shifted arithmetically: two samples
 * of 0x4000 give 0xC000, four of 0x3000 give 0xF000, four of 0x1FFF give 0x1FFF.
 *
 * Buffers: source n words; destination 3 n words, or n words a plane. No handle, no memory of their own. */

/* The checked entries. Nothing is written but for KRO_OK.
 * Returns KRO_ERR_NULL (destination or a plane, or source null), KRO_ERR_SIZE (width or height below 4), KRO_OK. */
KRO_API int32_t kroDemosaicingBilinearU16(const uint16_t* source, int32_t height, int32_t width,
                                          uint16_t* destination);
KRO_API int32_t kroDemosaicingBilinearU16P(const uint16_t* source, int32_t height, int32_t width, uint16_t* bluePlane,
                                           uint16_t* greenPlane, uint16_t* redPlane);
/* The same without checks; returns 0. */
KRO_API int32_t demosaicingBilinearRGGBU16(const uint16_t* source, int32_t height, int32_t width,
                                           uint16_t* destination);
KRO_API int32_t demosaicingBilinearRGGBU16P(const uint16_t* source, int32_t height, int32_t width,
                                            uint16_t* bluePlane, uint16_t* greenPlane, uint16_t* redPlane);
/* Regions, with Er and Ec, rows, columns and samples read as in the 8-bit table. `order` 0 puts words B, G, R, 1
 * puts R, G, B, except in the wrapping columns, which are B, G, R always. _lastRows and _lastCols begin at
 * firstBorderRow and firstBorderCol and end at the picture's last row and column. The body returns {Ec, Er}: the
 * first COLUMN that it left comes first, unlike in the 8-bit family. */
KRO_API void bilinearFirstRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t width, uint32_t order);
KRO_API void bilinearFirstColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                      uint32_t order);
KRO_API KroCoverage bilinearBodyRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                        uint32_t order);
KRO_API void bilinearLastRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                     int32_t firstBorderRow, uint32_t order);
KRO_API void bilinearLastColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                     int32_t firstBorderCol, uint32_t order);
/* The same to planes of n words each; no order flag. */
KRO_API void bilinearFirstRowsRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                       uint16_t* redPlane, int32_t width);
KRO_API void bilinearFirstColsRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                       uint16_t* redPlane, int32_t height, int32_t width);
KRO_API KroCoverage bilinearBodyRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                         uint16_t* redPlane, int32_t height, int32_t width);
KRO_API void bilinearLastRowsRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                      uint16_t* redPlane, int32_t height, int32_t width, int32_t firstBorderRow);
KRO_API void bilinearLastColsRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                      uint16_t* redPlane, int32_t height, int32_t width, int32_t firstBorderCol);

/* ---- edge-directed, 16 bits ----
 * The method of the 8-bit family on words, all four phases, to words B, G, R; signed 32-bit arithmetic, floor shifts,
 * ties vertical. Interpolated samples are clamped to 0..clampMax, a pixel's own sample never. Source n words,
 * destination 3 n words.
 *
 * The drivers write every pixel of frames of 4 x 4 and more, check nothing and return 0. Clamped at 4095 (12 bits):
 * the RG driver; at 65535: the others. */
KRO_API int32_t demosaicingEdgeRGGBU16(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination);
KRO_API int32_t demosaicingEdgeGRBGU16(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination);
KRO_API int32_t demosaicingEdgeGBRGU16(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination);
KRO_API int32_t demosaicingEdgeBGGRU16(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination);
/* Regions. They work on a view whose row 0 is a red row: the picture itself for RG and GR, the picture from row 1
 * on for GB and BG. startColumn is a red site's column in red rows: 2 for RG and GB, 3 for GR and BG. They read
 * greens back from the destination, so their order matters; this is how a picture of each phase is put together:
 *
 *     1  first rows      RG, GR  edgeFirstRowsRGGBU16 of the picture      GB, BG  edgeFirstRowsGBRGU16 of the picture
 *     2  first columns   RG, GB  edgeFirstColsRGGBU16 of the view         GR, BG  edgeFirstColsGRBGU16 of the view
 *     3  inner part      edgeSecRGGBU16 from row 2 of the view on, rows = the view's height - 4
 *     4  last rows       edgeLastRowsRGGBU16 of the picture, firstRow = picture row of step 3 + rows covered
 *     5  last columns    edgeLastColsRGGBU16 of the view, firstColumn = step 3's first column after
 *
 * The picture equals the driver's for heights of 4 or more (GB and BG: 5) and widths of 4 or more. Step 3 covers
 * rows in views of 6 rows and more; for smaller ones it returns {startColumn, 0}, and step 5 does the columns from
 * there on.
 *
 * The inner part. source and destination point to its first row, a red row with two rows above and, below the
 * covered ones, two more in view. Rows come in pairs, rows & ~1 of them from 2 on, columns in pairs from
 * startColumn while c < width - 3. Written: green and blue of the covered rows and columns; red one row and one
 * column earlier, from the row above the first and from column startColumn - 1, so that red lacks in the last row
 * and column covered. Read back: greens of the two rows above and of columns startColumn - 2 and startColumn - 1,
 * which steps 1 and 2 made.
 * Returns {first column after the covered ones, rows covered}. */
KRO_API KroCoverage edgeSecRGGBU16(const uint16_t* source, uint16_t* destination, int32_t rows, int32_t width,
                                   int32_t startColumn, int32_t clampMax);
/* All of row 0, and green and blue of row 1, all columns, from samples of rows 0 to 3. The GBRG form has a blue row
 * first: all of rows 0 and 1, green and blue of row 2, from rows 0 to 4. Nothing is read back. */
KRO_API void edgeFirstRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t width, int32_t startColumn,
                                  int32_t clampMax);
KRO_API void edgeFirstRowsGBRGU16(const uint16_t* source, uint16_t* destination, int32_t width, int32_t startColumn,
                                  int32_t clampMax);
/* Columns 0 and 1 (GRBG: 0 to 2) of rows 2 to height - 1, and their red of row 1. Read back: greens of rows 0 and
 * 1. */
KRO_API void edgeFirstColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                  int32_t clampMax);
KRO_API void edgeFirstColsGRBGU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                  int32_t clampMax);
/* Rows firstRow to height - 1 from startColumn to the last column, and the red of row firstRow - 1 there. firstRow
 * is a red row; the picture may begin with either. Nothing is read back. */
KRO_API void edgeLastRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                 int32_t firstRow, int32_t startColumn, int32_t clampMax);
/* Columns firstColumn to width - 1 of rows 2 to height - 1, their red of row 1, and the red of column firstColumn -
 * 1 from row 1 on. firstColumn is a red site's column in red rows. Read back: greens of rows 0 and 1. */
KRO_API void edgeLastColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                 int32_t firstColumn, int32_t clampMax);

#ifdef __cplusplus
}
#endif
#endif
