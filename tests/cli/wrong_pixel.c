/* Preloaded into the command: of bilinear pictures in planes of 16 bits the first byte that a view gets is wrong. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <kro/view.h>

int32_t kroConvertView(const KroSourceView* source, const KroPictureView* picture, const KroViewOptions* options) {
    int32_t (*convert)(const KroSourceView*, const KroPictureView*, const KroViewOptions*) = 0;
    *(void**)&convert = dlsym(RTLD_NEXT, "kroConvertView");
    const int32_t status = convert(source, picture, options);
    if (options->algorithm == KRO_BILINEAR && picture->format == KRO_RGB16_PLANAR) {
        *(uint8_t*)picture->plane[0] ^= 1;
    }
    return status;
}
