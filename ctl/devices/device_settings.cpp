#include "ctl/devices/device_settings.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "ctl/devices/property.h"
#include "ctl/terminal/decimal.h"
#include "ctl/terminal/printable.h"
#include "engine/core_audio_engine.h"

namespace tolvane::ctl {

namespace {

using Problem = std::optional<std::string>;

std::string counted(double value, const std::string& unit) {
  return plainDecimal(value) + ' ' + unit + (value == 1.0 ? "" : "s");
}

std::string hertz(double rate) {
  return plainDecimal(rate) + " Hz";
}

/// Sets the property, then waits until it has the value: a device may take a moment. `called` names the value
/// in messages.
template <class Value, class Naming>
Problem set(AudioDeviceID device, AudioObjectPropertySelector selector, Value wanted, const Naming& called) {
  using namespace std::chrono_literals;
  const AudioObjectPropertyAddress address = globalAddress(selector);
  const OSStatus status = AudioObjectSetPropertyData(device, &address, 0, nullptr, sizeof wanted, &wanted);
  if (status != noErr) return called(wanted) + " is refused (" + std::to_string(status) + ")";
  const auto deadline = std::chrono::steady_clock::now() + 1s;
  auto now = deviceProperty<Value>(device, selector);
  while (now && *now != wanted && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(10ms);
    now = deviceProperty<Value>(device, selector);
  }
  if (now.value_or(wanted) == wanted) return std::nullopt;
  return "takes " + called(*now) + " instead of " + plainDecimal(wanted);
}

bool has(const AudioValueRange& range, double value) {
  return value >= range.mMinimum && value <= range.mMaximum;
}

/// A setting that is a count within one range.
struct CountedSetting {
  AudioObjectPropertySelector value;
  AudioObjectPropertySelector range;
  const char* name;
  const char* before;  // the count, in messages
  const char* unit;
};

constexpr CountedSetting kBuffer{kAudioDevicePropertyBufferFrameSize,
                                 kAudioDevicePropertyBufferFrameSizeRange, "buffer size", "a buffer of ",
                                 "frame"};
constexpr CountedSetting kPeriods{kTolvaneDevicePropertyPeriods, kTolvaneDevicePropertyPeriodsRange,
                                  "number of periods", "a ring of ", "period"};

Problem setCount(AudioDeviceID device, const CountedSetting& setting, std::uint32_t wanted) {
  const std::string cannotBeSet = std::string("its ") + setting.name + " cannot be set";
  const auto range = deviceProperty<AudioValueRange>(device, setting.range);
  if (!range) return cannotBeSet;
  const auto called = [&](double count) { return setting.before + counted(count, setting.unit); };
  if (has(*range, wanted)) return set<UInt32>(device, setting.value, wanted, called);
  if (range->mMinimum == range->mMaximum) {
    return cannotBeSet + ", and is " + counted(range->mMinimum, setting.unit);
  }
  return called(wanted) + " is out of its range, " + plainDecimal(range->mMinimum) + " to " +
         counted(range->mMaximum, setting.unit);
}

/// The rates that the device can be set to; empty if it does not say.
std::vector<AudioValueRange> ratesOf(AudioDeviceID device) {
  const AudioObjectPropertyAddress address = globalAddress(kAudioDevicePropertyAvailableNominalSampleRates);
  UInt32 size = 0;
  if (AudioObjectGetPropertyDataSize(device, &address, 0, nullptr, &size) != noErr) return {};
  std::vector<AudioValueRange> rates(size / sizeof(AudioValueRange));
  size = static_cast<UInt32>(rates.size() * sizeof(AudioValueRange));
  if (rates.empty() ||
      AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, rates.data()) != noErr) {
    return {};
  }
  rates.resize(std::min(rates.size(), size / sizeof(AudioValueRange)));
  return rates;
}

/// "44100, 48000 to 96000 Hz"
std::string textOf(const std::vector<AudioValueRange>& rates) {
  std::string text;
  for (const AudioValueRange& range : rates) {
    text += (text.empty() ? "" : ", ") + plainDecimal(range.mMinimum);
    if (range.mMinimum != range.mMaximum) text += " to " + plainDecimal(range.mMaximum);
  }
  return text + " Hz";
}

Problem setRate(AudioDeviceID device, std::uint32_t wanted) {
  const auto now = deviceProperty<Float64>(device, kAudioDevicePropertyNominalSampleRate);
  if (now == static_cast<Float64>(wanted)) return std::nullopt;
  const std::vector<AudioValueRange> rates = ratesOf(device);
  const bool isOffered = std::any_of(rates.begin(), rates.end(),
                                     [&](const AudioValueRange& range) { return has(range, wanted); });
  const auto called = [](double rate) { return "a sample rate of " + hertz(rate); };
  if (isOffered) return set<Float64>(device, kAudioDevicePropertyNominalSampleRate, wanted, called);
  const bool isFixed = rates.empty() || (rates.size() == 1 && rates[0].mMinimum == rates[0].mMaximum);
  if (isFixed) return "its sample rate cannot be set" + (now ? ", and is " + hertz(*now) : "");
  return called(wanted) + " is none of its own, " + textOf(rates);
}

Problem apply(AudioDeviceID device, const DeviceSettings& settings) {
  Problem problem;
  if (settings.sampleRateHz) problem = setRate(device, *settings.sampleRateHz);
  if (!problem && settings.bufferFrames) problem = setCount(device, kBuffer, *settings.bufferFrames);
  if (!problem && settings.periods) problem = setCount(device, kPeriods, *settings.periods);
  return problem;
}

}  // namespace

std::optional<Failure> applySettings(AudioDeviceInfo& device, const DeviceSettings& settings) {
  if (const Problem problem = apply(device.id, settings)) return Failure{about(device.name, *problem)};
  if (!settings.sampleRateHz) return std::nullopt;
  const CoreAudioEngine engine;
  device.inputChannels = engine.channelCount(device.id, true);
  device.outputChannels = engine.channelCount(device.id, false);
  return std::nullopt;
}

}  // namespace tolvane::ctl
