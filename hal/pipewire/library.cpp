#include "hal/pipewire/library.h"

#include <array>
#include <charconv>
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

bool isSince(std::string_view version, int major, int minor) noexcept {
  std::array<int, 2> found{};
  const char* const end = version.data() + version.size();
  const char* const dot = std::from_chars(version.data(), end, found[0]).ptr;
  if (dot != end) std::from_chars(dot + 1, end, found[1]);
  return found >= std::array{major, minor};
}

const char* realTimeConfigName(std::string_view libraryVersion) noexcept {
  // From 1.4 on every client has real-time priority, and the library warns about the old name.
  return isSince(libraryVersion, 1, 4) ? "client.conf" : "client-rt.conf";
}

}  // namespace tolvane::hal::pipewire
