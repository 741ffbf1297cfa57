/* kro: frames as they come. Rows with padding, every packing, parts of a picture for many cores.
 *
 * kro.h serves frames whose rows follow each other without gaps, and writes pictures of 8 bits. This header serves
 * views: a frame with any distance from row to row, packed as sensors and drivers pack it, becomes a picture with any
 * distance from row to row, of 8 or 16 bits, the whole of it or a band of its rows. The call keeps no state,
 * allocates nothing and starts no thread, so bands of one picture may be made by as many threads as one likes.
 *
 *     void convert(const void* samples, void* pixels) {  // CSI-2 rows of 2304 bytes, 1536 pixels wide
 *         KroSourceView frame = {samples, 2304, 1024, 1536, KRO_SRGGB12P};
 *         KroPictureView picture = {{pixels}, {0}, KRO_RGBA8};
 *         KroViewOptions options = {sizeof options, KRO_EDGE};
 *         int32_t status = kroConvertView(&frame, &picture, &options);
 *         if (status != KRO_OK) complain(status);
 *     }
 *
 * BYTES
 *   For input and output formats that kro.h has, the bytes are those of kroDemosaicing, but for alpha, which is
 *   written everywhere. Each other input format gives the bytes of a frame that holds the same samples in words. The
 *   conventions of kro.h (PROMISE, ROUNDING, BORDERS, DETERMINISM, THREADS, ALIASING) hold here too. Source and
 *   picture must not overlap.
 *
 * SAMPLES
 *   A sample has `bits` significant bits: those of its format, or what KroViewOptions.bits says of a format of words.
 *   Pictures of 8 bits show the eight high ones. Words are taken as kroDemosaicing takes them: where bits are fewer
 *   than 16 and the word exceeds them, whole blocks of 16 samples of the frame (counted through all rows) saturate as
 *   signed words, the rest of the frame is cut off. KRO_VIEW_LEFT_ALIGNED words stand at the upper end of the word:
 *   their high byte is taken.
 *   Pictures of 16 bits hold the samples as numbers of `bits` bits: a word beyond 2^bits - 1 counts as 2^bits - 1, so
 *   that nothing in the picture exceeds it either. Sums do not wrap, for any phase. With KRO_VIEW_FULL_RANGE each
 *   finished value v becomes (v << (16 - bits)) | (v >> (2 bits - 16)), which takes 0 to 0 and the largest to 65535.
 *
 * STACK
 *   No call needs more than 20 KiB of stack (21 on s390x).
 */
#ifndef KRO_VIEW_H
#define KRO_VIEW_H

#include <stddef.h>

#include "kro/kro.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- further status codes ----
 * STRIDE     the rows of the source or of a plane are closer to each other than a row is long
 * OPTION     an option has no meaning, or none with this format
 * ALIGNMENT  16-bit samples at an odd address, or rows of them an odd number of bytes apart
 */
#define KRO_ERR_STRIDE (-120)
#define KRO_ERR_OPTION (-121)
#define KRO_ERR_ALIGNMENT (-122)

/* ---- a further algorithm ----
 * FINE  green and colours from differences weighted by their gradients, refined where a neighbourhood is smooth: 1
 *       to 3 dB above EDGE, at a sixth of its speed. kroDemosaicing does not know it
 */
#define KRO_FINE 3

/* ---- further input formats ----
 * Mono and Bayer ..10p, ..12p, ..14p: the samples' bits one after the other, least significant first, so that a
 * sample begins in the bit that follows the one before (4 samples in 5 bytes, 2 in 3, 4 in 7). Bayer ..14: words.
 * Codes of the GenICam Pixel Format Naming Convention (PFNC, list of values 2.1 and later).
 */
#define KRO_MONO10P 0x010A0046u
#define KRO_MONO12P 0x010C0047u
#define KRO_MONO14P 0x010E0104u
#define KRO_BAYER_BG10P 0x010A0052u
#define KRO_BAYER_BG12P 0x010C0053u
#define KRO_BAYER_GB10P 0x010A0054u
#define KRO_BAYER_GB12P 0x010C0055u
#define KRO_BAYER_GR10P 0x010A0056u
#define KRO_BAYER_GR12P 0x010C0057u
#define KRO_BAYER_RG10P 0x010A0058u
#define KRO_BAYER_RG12P 0x010C0059u
#define KRO_BAYER_GR14P 0x010E0105u
#define KRO_BAYER_RG14P 0x010E0106u
#define KRO_BAYER_GB14P 0x010E0107u
#define KRO_BAYER_BG14P 0x010E0108u
#define KRO_BAYER_GR14 0x01100109u
#define KRO_BAYER_RG14 0x0110010Au
#define KRO_BAYER_GB14 0x0110010Bu
#define KRO_BAYER_BG14 0x0110010Cu

/* MIPI CSI-2 packing: RAW10 has 4 samples in 5 bytes, RAW12 2 in 3, RAW14 4 in 7. The high eight bits of each sample
 * come first, a byte each; then the low bits of all of them, those of the first sample lowest. PFNC has no such
 * formats: the codes are the four letters (least significant first) that Linux gives them in videodev2.h.
 */
#define KRO_FOURCC(a, b, c, d) ((uint32_t)(a) | ((uint32_t)(b) << 8) | ((uint32_t)(c) << 16) | ((uint32_t)(d) << 24))
#define KRO_Y10P KRO_FOURCC('Y', '1', '0', 'P')
#define KRO_Y12P KRO_FOURCC('Y', '1', '2', 'P')
#define KRO_Y14P KRO_FOURCC('Y', '1', '4', 'P')
#define KRO_SRGGB10P KRO_FOURCC('p', 'R', 'A', 'A')
#define KRO_SGRBG10P KRO_FOURCC('p', 'g', 'A', 'A')
#define KRO_SGBRG10P KRO_FOURCC('p', 'G', 'A', 'A')
#define KRO_SBGGR10P KRO_FOURCC('p', 'B', 'A', 'A')
#define KRO_SRGGB12P KRO_FOURCC('p', 'R', 'C', 'C')
#define KRO_SGRBG12P KRO_FOURCC('p', 'g', 'C', 'C')
#define KRO_SGBRG12P KRO_FOURCC('p', 'G', 'C', 'C')
#define KRO_SBGGR12P KRO_FOURCC('p', 'B', 'C', 'C')
#define KRO_SRGGB14P KRO_FOURCC('p', 'R', 'E', 'E')
#define KRO_SGRBG14P KRO_FOURCC('p', 'g', 'E', 'E')
#define KRO_SGBRG14P KRO_FOURCC('p', 'G', 'E', 'E')
#define KRO_SBGGR14P KRO_FOURCC('p', 'B', 'E', 'E')

/* ---- further output formats ----
 * Letters in the order of bytes (words) in memory; x is a fourth byte without meaning, written as alpha is. 16-bit
 * samples are words of the machine. PFNC codes where PFNC has the format; else codes of our own, with PFNC's bit for
 * such codes (bit 31) set.
 */
#define KRO_RGBX8 0x82200001u
#define KRO_BGRX8 0x82200002u
#define KRO_ARGB8 0x82200003u
#define KRO_ABGR8 0x82200004u
#define KRO_XRGB8 0x82200005u
#define KRO_XBGR8 0x82200006u
#define KRO_RGB16 0x02300033u
#define KRO_BGR16 0x0230004Bu
#define KRO_RGBA16 0x02400064u
#define KRO_BGRA16 0x02400051u
#define KRO_ARGB16 0x82400007u
#define KRO_ABGR16 0x82400008u
#define KRO_RGB16_PLANAR 0x02300024u
#define KRO_BGR16_PLANAR 0x82300009u
/* and KRO_MONO16, of kro.h: luma as in Mono8, (77 R + 150 G + 29 B + 128) >> 8, never beyond 65535. */

/* ---- records ---- */

/* A frame. Data and record stay the caller's and are only read. The bytes between rows are not touched. */
typedef struct KroSourceView {
    const void* data; /* the first sample of row 0 */
    ptrdiff_t stride; /* bytes from a row to the next, negative where row 0 is the last in memory; 0: rows without
                         gaps, groups of packed samples running on over their ends (as cameras send 12Packed) */
    int32_t height;   /* rows, 4 or more */
    int32_t width;    /* samples in a row, 4 or more */
    uint32_t format;  /* an input format of kro.h or of this header */
} KroSourceView;

/* A picture of the same height and width. Bytes between rows are not touched. */
typedef struct KroPictureView {
    void* plane[4];      /* pixel 0 of row 0. Planar formats: three planes in the order of the format's name, and,
                            where plane[3] is not null, one that is filled with alpha. Others: plane[0]; the
                            rest is ignored */
    ptrdiff_t stride[4]; /* bytes from a row to the next, for each plane; negative as in a source; 0: rows
                            without gaps */
    uint32_t format;     /* an output format of kro.h or of this header */
} KroPictureView;

/* What else to know. All of it may be 0 but `size`; a null pointer stands for edge-directed, all else 0. */
typedef struct KroViewOptions {
    uint32_t size;          /* sizeof(KroViewOptions): of a shorter record the rest counts as 0, of a longer one all
                               bytes beyond what this library knows must be 0 */
    KroAlgorithm algorithm; /* KRO_NEAREST, KRO_BILINEAR, KRO_EDGE, KRO_FINE; grey sources know none, but check it */
    uint32_t flags;         /* KRO_VIEW_... */
    int32_t alpha;          /* with KRO_VIEW_ALPHA: 0 to 255, of 16-bit pictures 0 to 65535 */
    int32_t bits;           /* significant bits of words, 8 to 16; 0, or the format's own number, elsewhere */
    int32_t firstRow;       /* the band of rows to make: its first row, */
    int32_t rowCount;       /* and its rows; 0: all from firstRow on. Other rows of the picture are not touched. Any
                               division into bands gives the bytes of the whole */
} KroViewOptions;

#define KRO_VIEW_ALPHA 1u        /* alpha is options.alpha; without this flag it is opaque: 255 or 65535 */
#define KRO_VIEW_BIG_ENDIAN 2u   /* words have their high byte first; formats of words only */
#define KRO_VIEW_LEFT_ALIGNED 4u /* the significant bits are a word's high ones; formats of words only */
#define KRO_VIEW_FULL_RANGE 8u   /* 16-bit pictures use all 16 bits; no effect on pictures of 8 */

/* ---- functions ---- */

/* Turns a source view into a picture view, whole or in part. Words without KRO_VIEW_BIG_ENDIAN are words of the
 * machine: little-endian on all processors but a few.
 *
 *   source   (|stride|, or a row's length if that is 0) x (height - 1) and the last row are read at most; all of it
 *            for bands too, where they need it. Packed groups are read whole
 *   picture  rows firstRow to firstRow + rowCount - 1 are written whole, and nothing else
 *   options  may be null
 *
 * Returns, in this order of checks; but for KRO_OK nothing is written:
 *   KRO_ERR_NULL           source, picture, source->data, or a plane that the picture's format has is null
 *   KRO_ERR_SIZE           height or width is 3 or less or above 2^30, or a view is larger than the address space
 *   KRO_ERR_FORMAT         source->format is no input format
 *   KRO_ERR_OUTPUT_FORMAT  picture->format is no output format
 *   KRO_ERR_OPTION         size is below 4, or bytes beyond the known ones are not 0; unknown algorithm or flag;
 *                          alpha out of range; bits, or flags for words, that do not fit the format; a band outside
 *                          the picture
 *   KRO_ERR_STRIDE         |stride| is neither 0 nor at least the length of a row
 *   KRO_ERR_ALIGNMENT      words of the source or the picture are misaligned
 *   KRO_OK
 * Thread rules: re-entrant; calls on different pictures, or on different bands of one, may run at the same time. */
KRO_API int32_t kroConvertView(const KroSourceView* source, const KroPictureView* picture,
                               const KroViewOptions* options);

/* Bytes that a row of `width` samples or pixels takes, whole groups of packed samples; of planar formats, in one
 * plane. 0 for an unknown format or a width of 0 or below. This is the smallest stride. */
KRO_API ptrdiff_t kroRowBytes(uint32_t format, int32_t width);

#ifdef __cplusplus
}
#endif

#endif
