// Debian's libc++abi for WebAssembly is built without exceptions. What is thrown ends the module with its text on
// standard error, which the host sees as the trap of a call.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <typeinfo>

extern "C" {

void* __cxa_allocate_exception(size_t size) noexcept { return std::malloc(size); }
void __cxa_free_exception(void* memory) noexcept { std::free(memory); }

// All that the code in here throws derives from std::exception, first.
[[noreturn]] void __cxa_throw(void* thrown, std::type_info*, void (*)(void*)) {
    std::fputs(static_cast<const std::exception*>(thrown)->what(), stderr);
    std::abort();
}
}
