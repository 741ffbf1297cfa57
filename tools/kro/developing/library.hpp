#pragma once

#include <kro/kro.h>

#include <string>

namespace cli {

// Turns a status of the library into a failure that says what it means.
void checkStatus(int32_t status, const std::string& what);

// The library's handle, which belongs to one thread.
class Handle {
public:
    Handle();
    ~Handle();
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    KroContext* get() const { return context_; }

private:
    KroContext* context_ = nullptr;
};

}  // namespace cli
