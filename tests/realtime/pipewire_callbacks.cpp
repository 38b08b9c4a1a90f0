// Puts the watch's line around the callback that PipeWire's library calls.
#include "hal/pipewire/pipewire_headers.h"
#include "realtime/library_callbacks.h"

namespace tolvane::test {

namespace {

using AddListener = decltype(&pw_filter_add_listener);

AddListener addListener = nullptr;
const pw_filter_events* ourEvents = nullptr;

void addWatchedListener(pw_filter* filter, spa_hook* hook, const pw_filter_events* events, void* data) {
  static pw_filter_events watched;
  ourEvents = events;
  watched = *events;
  watched.process = [](void* self, spa_io_position* position) {
    const OurPart part;
    ourEvents->process(self, position);
  };
  addListener(filter, hook, &watched, data);
}

}  // namespace

void* watchedFunction(std::string_view name, void* found) {
  if (name != "pw_filter_add_listener" || found == nullptr) return found;
  addListener = reinterpret_cast<AddListener>(found);
  return reinterpret_cast<void*>(&addWatchedListener);
}

}  // namespace tolvane::test
