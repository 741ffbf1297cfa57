/* Where each field of each record lies, with pointers of 4 and of 8 bytes. Programs that were compiled yesterday
 * count on it, so these numbers change with the library's major version only. */
#include <kro/kro.h>
#include <kro/view.h>
#include <stddef.h>

#define WITH_POINTERS_OF(four, eight) (sizeof(void*) == 4 ? (size_t)(four) : (size_t)(eight))
#define BYTES(record, four, eight) \
    typedef char record##_bytes[sizeof(record) == WITH_POINTERS_OF(four, eight) ? 1 : -1]
#define AT(record, field, four, eight) \
    typedef char record##_##field##_at[offsetof(record, field) == WITH_POINTERS_OF(four, eight) ? 1 : -1]

BYTES(KroAlgorithm, 4, 4);

BYTES(KroImage, 16, 24);
AT(KroImage, height, 0, 0);
AT(KroImage, width, 4, 4);
AT(KroImage, pixelFormat, 8, 8);
AT(KroImage, data, 12, 16);

BYTES(KroScratch, 8, 16);
AT(KroScratch, data, 0, 0);
AT(KroScratch, capacity, 4, 8);

BYTES(KroContext, 52, 64);
AT(KroContext, outputFormat, 0, 0);
AT(KroContext, reservedA, 4, 4);
AT(KroContext, reservedB, 8, 8);
AT(KroContext, reservedTriple, 12, 12);
AT(KroContext, reservedC, 36, 36);
AT(KroContext, reservedD, 40, 40);
AT(KroContext, scratch, 44, 48);

BYTES(KroCoverage, 8, 8);
AT(KroCoverage, first, 0, 0);
AT(KroCoverage, second, 4, 4);

BYTES(KroSourceView, 20, 32);
AT(KroSourceView, data, 0, 0);
AT(KroSourceView, stride, 4, 8);
AT(KroSourceView, height, 8, 16);
AT(KroSourceView, width, 12, 20);
AT(KroSourceView, format, 16, 24);

BYTES(KroPictureView, 36, 72);
AT(KroPictureView, plane, 0, 0);
AT(KroPictureView, stride, 16, 32);
AT(KroPictureView, format, 32, 64);

BYTES(KroViewOptions, 28, 28);
AT(KroViewOptions, size, 0, 0);
AT(KroViewOptions, algorithm, 4, 4);
AT(KroViewOptions, flags, 8, 8);
AT(KroViewOptions, alpha, 12, 12);
AT(KroViewOptions, bits, 16, 16);
AT(KroViewOptions, firstRow, 20, 20);
AT(KroViewOptions, rowCount, 24, 24);
