// Puts the watch's line around the callback that libjack calls.
#include <cstdint>

#include "realtime/library_callbacks.h"

namespace tolvane::test {

namespace {

// libjack's types, which this file needs only to pass on.
using Process = int (*)(std::uint32_t frames, void* argument);
using SetProcess = int (*)(void* client, Process process, void* argument);

SetProcess setProcess = nullptr;
Process ourProcess = nullptr;

int watchedProcess(std::uint32_t frames, void* argument) {
  const OurPart part;
  return ourProcess(frames, argument);
}

int setWatchedProcess(void* client, Process process, void* argument) {
  ourProcess = process;
  return setProcess(client, &watchedProcess, argument);
}

}  // namespace

void* watchedFunction(std::string_view name, void* found) {
  if (name != "jack_set_process_callback" || found == nullptr) return found;
  setProcess = reinterpret_cast<SetProcess>(found);
  return reinterpret_cast<void*>(&setWatchedProcess);
}

}  // namespace tolvane::test
