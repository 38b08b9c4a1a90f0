#include "ctl/devices/buffer_size.h"

#include <string>

#include "ctl/devices/property.h"
#include "ctl/terminal/decimal.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

std::string frameCount(double frames) {
  return plainDecimal(frames) + (frames == 1.0 ? " frame" : " frames");
}

/// Why the range does not allow `frames`; none if it does.
std::optional<std::string> objection(const std::optional<AudioValueRange>& range, std::uint32_t frames) {
  if (!range) return "its buffer size cannot be set";
  if (frames >= range->mMinimum && frames <= range->mMaximum) return std::nullopt;
  if (range->mMinimum == range->mMaximum) {
    return "its buffer size cannot be set, and is " + frameCount(range->mMinimum);
  }
  return "a buffer of " + frameCount(frames) + " is out of its range, " + plainDecimal(range->mMinimum) +
         " to " + frameCount(range->mMaximum);
}

OSStatus write(AudioDeviceID device, std::uint32_t frames) {
  const AudioObjectPropertyAddress address = globalAddress(kAudioDevicePropertyBufferFrameSize);
  const UInt32 value = frames;
  return AudioObjectSetPropertyData(device, &address, 0, nullptr, sizeof value, &value);
}

}  // namespace

std::optional<Failure> setBufferFrames(const AudioDeviceInfo& device, std::uint32_t frames) {
  const auto range = deviceProperty<AudioValueRange>(device.id, kAudioDevicePropertyBufferFrameSizeRange);
  if (const auto why = objection(range, frames)) return Failure{about(device.name, *why)};
  if (const OSStatus status = write(device.id, frames); status != noErr) {
    return Failure{about(
        device.name, "a buffer of " + frameCount(frames) + " is refused (" + std::to_string(status) + ")")};
  }
  const auto now = deviceProperty<UInt32>(device.id, kAudioDevicePropertyBufferFrameSize);
  if (now.value_or(frames) == frames) return std::nullopt;
  return Failure{
      about(device.name, "takes a buffer of " + frameCount(*now) + " instead of " + std::to_string(frames))};
}

}  // namespace tolvane::ctl
