// Ends while devices run, in the way that the argument names.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>

#include <unistd.h>

#include "hal/core_audio.h"
#include "hal/virtual/virtual_device.h"

namespace {

std::atomic<bool> exitInCallback{false};

OSStatus proc(AudioObjectID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
              AudioBufferList* output, const AudioTimeStamp*, void* memory) {
  if (exitInCallback.exchange(false)) std::exit(7);
  // The program's own memory, in use until the very end.
  std::memcpy(output->mBuffers[0].mData, memory, 64);
  return noErr;
}

AudioObjectID lastDevice() {
  const AudioObjectPropertyAddress list{kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal,
                                        kAudioObjectPropertyElementMain};
  AudioObjectID ids[64] = {};
  UInt32 size = sizeof ids;
  if (AudioObjectGetPropertyData(kAudioObjectSystemObject, &list, 0, nullptr, &size, ids) != noErr) return 0;
  return ids[size / sizeof ids[0] - 1];
}

class SleepingTap final : public tolvane::hal::VirtualTap {
 public:
  void observe(std::uint64_t, std::uint32_t, const AudioBufferList&) noexcept override { ::sleep(3600); }
};

}  // namespace

int main(int argc, char** argv) {
  const std::string_view way = argc > 1 ? argv[1] : "";
  static SleepingTap tap;
  tolvane::hal::VirtualDeviceConfig config;
  config.bufferFrames = 64;
  if (way == "hang") config.outputTap = &tap;
  if (tolvane::hal::configureVirtualDevice(config) != noErr) return 1;
  static char memory[64] = {};
  const AudioObjectID device = lastDevice();
  for (int i = 0; i < 3; ++i) {
    AudioDeviceIOProcID id = nullptr;
    if (AudioDeviceCreateIOProcID(device, proc, memory, &id) != noErr) return 2;
    if (AudioDeviceStart(device, id) != noErr) return 3;
  }
  exitInCallback = way == "callback";  // set after all starts: only the callback ends the process
  std::this_thread::sleep_for(std::chrono::milliseconds(way == "callback" ? 60000 : 30));
  if (way == "exit") std::exit(5);
  return way == "return" || way == "hang" ? 6 : 4;
}
