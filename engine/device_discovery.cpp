// Device queries of CoreAudioEngine: the list of devices and their channel counts.
#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "base/fatal.h"
#include "base/thread_check.h"
#include "engine/core_audio_engine.h"
#include "engine/device_text.h"

namespace tolvane {

namespace {

AudioObjectPropertyAddress address(AudioObjectPropertySelector selector,
                                   AudioObjectPropertyScope scope) noexcept {
  return {selector, scope, kAudioObjectPropertyElementMain};
}

std::int64_t checkedSum(std::int64_t a, std::int64_t b) noexcept {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) fatal("the number of channels of a device is beyond 64 bits");
  return sum;
}

/// The total channel count of the buffer list in these bytes. Buffers beyond their end do not count.
std::int64_t totalChannels(std::span<const std::byte> bytes) noexcept {
  constexpr std::size_t kHeaderBytes = offsetof(AudioBufferList, mBuffers);
  if (bytes.size() < kHeaderBytes) return 0;
  const auto* const list = reinterpret_cast<const AudioBufferList*>(bytes.data());
  const std::size_t room = (bytes.size() - kHeaderBytes) / sizeof(AudioBuffer);
  const std::size_t buffers = std::min<std::size_t>(list->mNumberBuffers, room);
  std::int64_t total = 0;
  for (std::size_t b = 0; b < buffers; ++b) total = checkedSum(total, list->mBuffers[b].mNumberChannels);
  return total;
}

}  // namespace

std::vector<AudioDeviceInfo> CoreAudioEngine::getAllDevices() const {
  checkMainThread();
  const auto list = address(kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal);
  UInt32 size = 0;
  if (AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &list, 0, nullptr, &size) != noErr ||
      size == 0) {
    return {};
  }
  // If the list has shrunk since its size was read, zeros remain at the end. A zero is no device and is
  // skipped below. One extra element leaves room for a size that is not a multiple of an identifier's.
  const std::size_t count = size / sizeof(AudioDeviceID);
  std::vector<AudioDeviceID> ids(count + 1, kAudioObjectUnknown);
  if (AudioObjectGetPropertyData(kAudioObjectSystemObject, &list, 0, nullptr, &size, ids.data()) != noErr) {
    return {};
  }
  ids.resize(count);
  std::vector<AudioDeviceInfo> devices;
  for (const AudioDeviceID id : ids) {
    std::optional<std::string> name = deviceText(id, kAudioObjectPropertyName);
    if (!name) continue;
    const std::int64_t inputs = channelCount(id, true);
    const std::int64_t outputs = channelCount(id, false);
    if (checkedSum(inputs, outputs) > 0) devices.push_back({id, std::move(*name), inputs, outputs});
  }
  return devices;
}

std::int64_t CoreAudioEngine::channelCount(AudioDeviceID device, bool input) const {
  checkMainThread();
  const auto streams = address(kAudioDevicePropertyStreamConfiguration,
                               input ? kAudioObjectPropertyScopeInput : kAudioObjectPropertyScopeOutput);
  UInt32 size = 0;
  if (AudioObjectGetPropertyDataSize(device, &streams, 0, nullptr, &size) != noErr || size == 0) return 0;
  const std::size_t allocated = size;
  const auto bytes = std::make_unique<std::byte[]>(allocated);
  if (AudioObjectGetPropertyData(device, &streams, 0, nullptr, &size, bytes.get()) != noErr) return 0;
  return totalChannels({bytes.get(), allocated});
}

}  // namespace tolvane
