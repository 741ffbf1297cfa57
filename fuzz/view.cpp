// kroConvertView against the reference: status, every byte of the picture, and nothing else.
#include "view_request.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Choices choices(data, size);
    fuzz::ViewRequest request(choices);
    // A view too large to be laid out here is only taken where it must be refused.
    if (request.expectedStatus() != KRO_OK || request.fits()) {
        request.requireResult(request.run(kroConvertView));
    }
    return 0;
}
