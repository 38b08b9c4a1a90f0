#include "hal/pipewire/library.h"

#include <cstdlib>
#include <optional>

#include <dlfcn.h>

namespace tolvane::hal::pipewire {

namespace {

template <class Function>
bool resolve(void* handle, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(handle, name));
  return function != nullptr;
}

std::optional<Library> load() {
  void* handle = ::dlopen("libpipewire-0.3.so.0", RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) return std::nullopt;
  Library loaded;
  bool complete = true;
#define TOLVANE_PIPEWIRE_RESOLVE(name) complete = resolve(handle, #name, loaded.name) && complete;
  TOLVANE_PIPEWIRE_FUNCTIONS(TOLVANE_PIPEWIRE_RESOLVE)
#undef TOLVANE_PIPEWIRE_RESOLVE
  if (!complete) {
    ::dlclose(handle);
    return std::nullopt;
  }
  loaded.pw_init(nullptr, nullptr);
  if (std::getenv("PIPEWIRE_DEBUG") == nullptr) loaded.pw_log_set_level(SPA_LOG_LEVEL_NONE);
  return loaded;
}

}  // namespace

const Library* library() {
  static const std::optional<Library> kLoaded = load();
  return kLoaded ? &*kLoaded : nullptr;
}

}  // namespace tolvane::hal::pipewire
