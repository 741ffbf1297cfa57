#include "developing/library.hpp"

#include "support/failure.hpp"

namespace cli {

namespace {

std::string meaning(int32_t status) {
    switch (status) {
        case KRO_ERR_FORMAT:
            return "input format not supported";
        case KRO_ERR_SIZE:
            return "size not supported";
        case KRO_ERR_OUTPUT_FORMAT:
            return "output format not supported";
        case KRO_ERR_NO_MEMORY:
            return "out of memory";
        default:
            return "status " + std::to_string(status);
    }
}

}  // namespace

void checkStatus(int32_t status, const std::string& what) {
    if (status != KRO_OK) {
        throw Failure(what + ": " + meaning(status));
    }
}

Handle::Handle() { checkStatus(kroCreate(&context_), "library"); }

Handle::~Handle() { kroRelease(&context_); }

}  // namespace cli
