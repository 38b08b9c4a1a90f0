#include "ctl/devices/wait.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "ctl/devices/property.h"
#include "ctl/devices/silence.h"
#include "ctl/terminal/messages.h"
#include "ctl/terminal/printable.h"
#include "engine/core_audio_engine.h"
#include "engine/device_text.h"

namespace tolvane::ctl {

namespace {

using Clock = std::chrono::steady_clock;

/// Each list costs the sound servers an answer, so a long wait asks less often.
constexpr std::chrono::milliseconds kListInterval{50};
constexpr std::chrono::milliseconds kLateListInterval{250};
constexpr std::chrono::seconds kLate{5};

/// Asks the HAL for its list again after the engine found no device: the error, or noErr.
OSStatus listStatus() {
  const AudioObjectPropertyAddress list = globalAddress(kAudioHardwarePropertyDevices);
  UInt32 size = 0;
  return AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &list, 0, nullptr, &size);
}

DeviceListing listDevicesNow() {
  DeviceListing listing;
  listing.devices = CoreAudioEngine().getAllDevices();
  listing.silentServers = deviceText(kAudioObjectSystemObject, kTolvanePropertySilentServers).value_or("");
  return listing;
}

DeviceListingResult listOrFailure() {
  constexpr int kAttempts = 3;
  for (int attempt = 1;; ++attempt) {
    DeviceListing listing = listDevicesNow();
    if (!listing.devices.empty() || attempt == kAttempts) return listing;
    const OSStatus status = listStatus();
    if (status != noErr) return Failure{"the audio devices cannot be listed: " + statusText(status)};
    // The HAL can list now, so the engine's empty list may be due to an error that has passed: try again.
  }
}

/// Once in the life of the program.
void sayProblems() {
  static bool isSaid = false;
  if (std::exchange(isSaid, true)) return;
  const std::string lines = deviceText(kAudioObjectSystemObject, kTolvanePropertyProblems).value_or("");
  for (std::size_t at = 0; at < lines.size();) {
    const std::size_t end = std::min(lines.find('\n', at), lines.size());
    say(printable(lines.substr(at, end - at)));
    at = end + 1;
  }
}

}  // namespace

DeviceListingResult awaitDevices(double seconds, const std::function<bool(const DeviceListing&)>& isEnough) {
  const std::chrono::duration<double> limit(seconds);
  const Clock::time_point begin = Clock::now();
  Silence silence(begin);
  for (;;) {
    DeviceListingResult listing = listOrFailure();
    const Clock::time_point listedAt = Clock::now();
    if (listing) silence.note(listing.value().silentServers, listedAt);
    const auto isOver = [&] { return listedAt - begin >= limit && silence.hasLasted(limit); };
    if (!listing || isEnough(listing.value()) || isOver()) {
      sayProblems();
      return listing;
    }
    std::this_thread::sleep_for(Clock::now() - begin < kLate ? kListInterval : kLateListInterval);
  }
}

DeviceListingResult awaitAllDevices(double seconds) {
  return awaitDevices(seconds, [](const DeviceListing& listing) { return listing.silentServers.empty(); });
}

Failure silenceOf(const DeviceListing& listing) {
  const bool isOne = listing.silentServers.find(',') == std::string::npos;
  return {isOne ? "the sound server " + listing.silentServers + " does not answer"
                : "the sound servers " + listing.silentServers + " do not answer"};
}

std::string statusText(OSStatus status) {
  if (status == kTolvaneExhaustedError) return "no thread, memory or descriptor is left";
  return "status " + std::to_string(status);
}

}  // namespace tolvane::ctl
