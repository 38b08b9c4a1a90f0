#include "hal/support/shared_library.h"

#include <dlfcn.h>

namespace tolvane::hal {

SharedLibrary::SharedLibrary(const char* fileName) noexcept
    : handle_(::dlopen(fileName, RTLD_NOW | RTLD_LOCAL)), isComplete_(handle_ != nullptr) {}

void* SharedLibrary::address(const char* name) noexcept {
  return handle_ == nullptr ? nullptr : ::dlsym(handle_, name);
}

}  // namespace tolvane::hal
