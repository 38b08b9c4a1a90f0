#include "hal/pipewire/library.h"

#include <cstdlib>
#include <optional>

#include "hal/support/shared_library.h"

namespace tolvane::hal::pipewire {

namespace {

std::optional<Library> load() {
  SharedLibrary file("libpipewire-0.3.so.0");
  Library loaded;
#define TOLVANE_PIPEWIRE_RESOLVE(name) file.resolve(#name, loaded.name);
  TOLVANE_PIPEWIRE_FUNCTIONS(TOLVANE_PIPEWIRE_RESOLVE)
#undef TOLVANE_PIPEWIRE_RESOLVE
  if (!file.isComplete()) return std::nullopt;
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
