#include "engine/device_prefetch.h"

#include "base/thread_check.h"
#include "hal/core_audio.h"

namespace tolvane {

void prefetchDevices() noexcept {
  checkMainThread();
  const AudioObjectPropertyAddress prefetch{kTolvanePropertyPrefetch, kAudioObjectPropertyScopeGlobal,
                                            kAudioObjectPropertyElementMain};
  const UInt32 begin = 1;
  AudioObjectSetPropertyData(kAudioObjectSystemObject, &prefetch, 0, nullptr, sizeof begin, &begin);
}

}  // namespace tolvane
