#include "realtime/library_callbacks.h"

#include <dlfcn.h>

// Takes precedence over the C library's. NOLINTNEXTLINE(readability-identifier-naming): the C library's name
extern "C" void* dlsym(void* library, const char* name) noexcept {
  using Find = void* (*)(void*, const char*);
  static const auto find = reinterpret_cast<Find>(::dlvsym(RTLD_NEXT, "dlsym", "GLIBC_2.34"));
  return tolvane::test::watchedFunction(name, find(library, name));
}
