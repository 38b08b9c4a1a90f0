// The watch in sanitized builds.
#include <cstddef>

#include "support/realtime_watch.h"

// Declared here because not every compiler installs the sanitizer's header.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));

namespace tolvane::test {

namespace {

void onMalloc(const volatile void* /*block*/, std::size_t /*size*/) {
  noteAllocation();
}

void onFree(const volatile void* /*block*/) {
  noteFree();
}

[[maybe_unused]] const int kInstalled = __sanitizer_install_malloc_and_free_hooks(onMalloc, onFree);

}  // namespace

bool beginSystemCallReports() noexcept {
  return false;
}

void endSystemCallReports() noexcept {}

}  // namespace tolvane::test
