// SPDX-License-Identifier: MIT
//
// What programs of tests take beside WebAssembly's C++ library, which has no exceptions, and its
// compiler's, which is built with stack guards that nothing defines.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <typeinfo>

extern "C" {

void* __cxa_allocate_exception(std::size_t size) {
  return std::malloc(size);
}

[[noreturn]] void __cxa_throw(void*, std::type_info* type, void (*)(void*)) {
  std::fprintf(stderr, "a %s was thrown\n", type->name());
  std::abort();
}

extern const std::uintptr_t __stack_chk_guard = 0x5AFE57AC;

[[noreturn]] void __stack_chk_fail() {
  std::abort();
}
}
