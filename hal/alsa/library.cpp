#include "hal/alsa/library.h"

#include <optional>

#include "hal/support/shared_library.h"

namespace tolvane::hal::alsa {

namespace {

// NOLINTNEXTLINE(cert-dcl50-cpp): the library's type of handler
void discardMessage(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                    const char* /*format*/, ...) {}

// NOLINTNEXTLINE(readability-function-size): one statement for each function of the library
std::optional<Library> load() {
  SharedLibrary file("libasound.so.2");
  Library loaded;
#define TOLVANE_ALSA_RESOLVE(name) file.resolve(#name, loaded.name);
  TOLVANE_ALSA_FUNCTIONS(TOLVANE_ALSA_RESOLVE)
#undef TOLVANE_ALSA_RESOLVE
  if (!file.isComplete()) return std::nullopt;
  // Otherwise it writes to standard error for every card that has gone meanwhile.
  loaded.snd_lib_error_set_handler(&discardMessage);
  return loaded;
}

}  // namespace

const Library* library() {
  static const std::optional<Library> kLoaded = load();
  return kLoaded ? &*kLoaded : nullptr;
}

int openPcm(const Library& alsa, const char* name, Direction direction, PcmHandle& pcm) noexcept {
  snd_pcm_t* opened = nullptr;
  const int error = alsa.snd_pcm_open(&opened, name, streamOf(direction), SND_PCM_NONBLOCK);
  if (error < 0) return error;
  pcm = PcmHandle(opened, {&alsa});
  return 0;
}

}  // namespace tolvane::hal::alsa
