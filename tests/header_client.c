/* The header and the library as a host sees them, in every language standard that the header promises. */
#include <kro/kro.h>
#include <string.h>

#include "records.h"

static int convertsASmallFrame(KroContext* handle) {
    uint8_t mosaic[4 * 5];
    uint8_t picture[4 * 5 * 3];
    KroImage input;
    KroImage output;
    memset(mosaic, 9, sizeof mosaic);
    memset(picture, 0, sizeof picture);
    input.height = 4;
    input.width = 5;
    input.pixelFormat = KRO_BAYER_GB8;
    input.data = mosaic;
    output = input;
    output.data = picture;
    if (kroDemosaicing(handle, &input, KRO_EDGE, &output) != KRO_OK || output.pixelFormat != KRO_BGR8) {
        return 0;
    }
    for (unsigned i = 0; i < sizeof picture; ++i) {
        if (picture[i] != 9) {
            return 0;
        }
    }
    return 1;
}

int main(void) {
    KroContext* handle = 0;
    uint32_t format = 0;
    int good = kroCreate(&handle) == KRO_OK && kroDemosaicGetConfig(handle, &format) == KRO_OK &&
               format == KRO_BGR8 && convertsASmallFrame(handle);
    good = kroRelease(&handle) == KRO_OK && handle == 0 && good;
    return good ? 0 : 1;
}
