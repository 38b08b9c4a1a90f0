#include "hal/pipewire/library.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

#include "hal/support/shared_library.h"

namespace tolvane::hal::pipewire {

namespace {

struct Loaded {
  std::optional<Library> library;
  std::string problem;
};

std::string problemOf(const SharedLibrary& file, std::string_view version) {
  if (!file.isThere() || (file.isComplete() && isSince(version, 0, 3, 65))) return {};
  const std::string which = version.empty() ? "PipeWire" : "PipeWire " + std::string(version);
  if (!file.isComplete()) return which + " is too old to be used: 0.3.65 or later is needed";
  return which + " is older than 0.3.65, the oldest that is tested";
}

Loaded load() {
  SharedLibrary file("libpipewire-0.3.so.0");
  Library loaded;
#define TOLVANE_PIPEWIRE_RESOLVE(name) file.resolve(#name, loaded.name);
  TOLVANE_PIPEWIRE_FUNCTIONS(TOLVANE_PIPEWIRE_RESOLVE)
#undef TOLVANE_PIPEWIRE_RESOLVE
  const char* const version = loaded.pw_get_library_version != nullptr ? loaded.pw_get_library_version() : "";
  std::string problem = problemOf(file, version);
  if (!file.isComplete()) return {std::nullopt, std::move(problem)};
  loaded.pw_init(nullptr, nullptr);
  if (std::getenv("PIPEWIRE_DEBUG") == nullptr) loaded.pw_log_set_level(SPA_LOG_LEVEL_NONE);
  return {loaded, std::move(problem)};
}

const Loaded& loadedOnce() {
  static const Loaded kLoaded = load();
  return kLoaded;
}

}  // namespace

const Library* library() {
  const Loaded& loaded = loadedOnce();
  return loaded.library ? &*loaded.library : nullptr;
}

std::string libraryProblem() {
  return loadedOnce().problem;
}

bool isSince(std::string_view version, int major, int minor, int micro) noexcept {
  std::array<int, 3> found{};
  const char* at = version.data();
  const char* const end = at + version.size();
  for (int& number : found) {
    at = std::from_chars(at, end, number).ptr;
    if (at == end || *at != '.') break;
    ++at;
  }
  return found >= std::array{major, minor, micro};
}

const char* realTimeConfigName(std::string_view libraryVersion) noexcept {
  // From 1.4 on every client has real-time priority, and the library warns about the old name.
  return isSince(libraryVersion, 1, 4) ? "client.conf" : "client-rt.conf";
}

}  // namespace tolvane::hal::pipewire
