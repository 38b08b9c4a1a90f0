// For tests of the engine: a callback that counts cycles, and queries of the engine's device.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/routing/io_proc.h"
#include "engine/core_audio_engine.h"
#include "hal/hal_client.h"
#include "support/stall_watch.h"

namespace tolvane::test {

/// The number of cycles that countingIoProc() has run in this process.
inline std::atomic<std::uint64_t> engineCycles{0};

/// Routes like the engine's own callback, and counts.
inline OSStatus countingIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* input,
                               const AudioTimeStamp* inputTime, AudioBufferList* output,
                               const AudioTimeStamp* outputTime, void* clientData) {
  const OSStatus status = halIOProc(device, now, input, inputTime, output, outputTime, clientData);
  ++engineCycles;
  return status;
}

inline std::vector<std::string> namesOf(const std::vector<AudioDeviceInfo>& devices) {
  std::vector<std::string> names;
  for (const AudioDeviceInfo& device : devices) names.push_back(device.name);
  return names;
}

/// Waits for the engine's device of this name and returns it.
inline AudioDeviceID deviceNamed(const CoreAudioEngine& engine, const std::string& name) {
  AudioDeviceID id = kAudioObjectUnknown;
  EXPECT_TRUE(eventually([&] {
    for (const AudioDeviceInfo& info : engine.getAllDevices()) {
      if (info.name == name) id = info.id;
    }
    return id != kAudioObjectUnknown;
  })) << name;
  return id;
}

inline bool isAlive(AudioDeviceID device) {
  return valueOf<UInt32>(device, kAudioDevicePropertyDeviceIsAlive) != 0;
}

/// True if at least two more cycles run within the limit.
inline bool runs(std::chrono::milliseconds limit) {
  const std::uint64_t before = engineCycles;
  return eventually(limit, [&] { return engineCycles > before + 1; });
}

/// Expects a stop within one second, whatever the server does, and no cycle after it.
inline void expectStopsInASecond(CoreAudioEngine& engine) {
  EXPECT_LT(timeOf([&] { engine.stop(); }), std::chrono::seconds(1));
  const std::uint64_t cycles = engineCycles;
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(engineCycles, cycles);
}

}  // namespace tolvane::test
