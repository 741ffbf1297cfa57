// Debian's libc++abi for WebAssembly is built without exceptions. What is thrown ends the call in a trap, after which
// its text can be asked for; the instance has had its day then.
#include <cstdlib>
#include <exception>
#include <string>
#include <typeinfo>

namespace {

std::string text;

}  // namespace

extern "C" {

__attribute__((export_name("thrownText"))) const char* thrownText() { return text.c_str(); }

void* __cxa_allocate_exception(size_t size) noexcept { return std::malloc(size); }
void __cxa_free_exception(void* memory) noexcept { std::free(memory); }

// All that is thrown in here begins as a std::exception does.
[[noreturn]] void __cxa_throw(void* thrown, std::type_info*, void (*)(void*)) {
    text = static_cast<const std::exception*>(thrown)->what();
    __builtin_trap();
}
}
