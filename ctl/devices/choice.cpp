#include "ctl/devices/choice.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>

#include "ctl/devices/claim.h"
#include "ctl/devices/property.h"
#include "ctl/terminal/printable.h"
#include "engine/device_text.h"

namespace tolvane::ctl {

namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool containsIgnoringCase(std::string_view text, std::string_view part) {
  return std::search(text.begin(), text.end(), part.begin(), part.end(),
                     [](char a, char b) { return lower(a) == lower(b); }) != text.end();
}

bool isNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool hasId(const AudioDeviceInfo& device, std::string_view digits) {
  AudioDeviceID id = kAudioObjectUnknown;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), id);
  return error == std::errc() && device.id == id;
}

template <class Matches>
std::vector<AudioDeviceInfo> matching(const std::vector<AudioDeviceInfo>& devices, Matches matches) {
  std::vector<AudioDeviceInfo> found;
  std::copy_if(devices.begin(), devices.end(), std::back_inserter(found), matches);
  return found;
}

bool hasUid(const AudioDeviceInfo& device, const std::string& uid) {
  return deviceText(device.id, kAudioDevicePropertyDeviceUID) == uid;
}

std::vector<AudioDeviceInfo> candidates(const std::vector<AudioDeviceInfo>& devices,
                                        const std::string& wanted) {
  auto same = matching(devices, [&](const AudioDeviceInfo& d) { return hasUid(d, wanted); });
  if (!same.empty()) return same;
  auto exact = matching(devices, [&](const AudioDeviceInfo& d) { return d.name == wanted; });
  if (!exact.empty()) return exact;
  // A number never falls through to parts of names: a departed identifier must not choose another device.
  if (isNumber(wanted)) return matching(devices, [&](const AudioDeviceInfo& d) { return hasId(d, wanted); });
  return matching(devices, [&](const AudioDeviceInfo& d) { return containsIgnoringCase(d.name, wanted); });
}

Failure noChoice(const std::string& problem, const std::vector<AudioDeviceInfo>& devices) {
  std::string text = problem + "; the devices are:";
  for (const AudioDeviceInfo& device : devices) {
    text += "\n  " + std::to_string(device.id) + "  " + printable(device.name);
  }
  return {text, ExitStatus::noSuchDevice};
}

bool isVirtual(const AudioDeviceInfo& device) {
  return deviceProperty<UInt32>(device.id, kAudioDevicePropertyTransportType) ==
         kAudioDeviceTransportTypeVirtual;
}

/// True if devices that appear later cannot change the choice.
bool isDecided(const DeviceListing& listing, const std::string& wanted) {
  const bool isComplete = listing.silentServers.empty();
  if (wanted.empty()) return isComplete;
  const auto found = candidates(listing.devices, wanted);
  if (isComplete) return !found.empty();
  return found.size() == 1 && (found.front().name == wanted || hasUid(found.front(), wanted));
}

}  // namespace

DeviceChoice chooseDevice(const std::vector<AudioDeviceInfo>& devices, const std::string& wanted) {
  if (devices.empty()) return Failure{"there is no audio device", ExitStatus::noSuchDevice};
  if (wanted.empty()) return devices.front();
  const std::vector<AudioDeviceInfo> found = candidates(devices, wanted);
  if (found.size() == 1) return found.front();
  if (found.empty()) return noChoice("no device is called \"" + printable(wanted) + "\"", devices);
  return noChoice("several devices are called \"" + printable(wanted) + "\", give an identifier", devices);
}

DeviceChoice chooseListed(const DeviceListing& listing, const std::string& wanted) {
  DeviceChoice choice = chooseDevice(listing.devices, wanted);
  if (isDecided(listing, wanted) || listing.silentServers.empty()) return choice;
  const bool isMissing = !choice && candidates(listing.devices, wanted).empty();
  const bool isStopgap = choice && (wanted.empty() ? isVirtual(choice.value()) : isNumber(wanted));
  return isMissing || isStopgap ? silenceOf(listing) : choice;
}

DeviceChoice awaitDevice(const std::string& wanted, double seconds,
                         const std::function<bool()>& isInterrupted) {
  const auto isEnough = [&](const DeviceListing& listing) {
    return isInterrupted() || isDecided(listing, wanted);
  };
  const DeviceListingResult listing = awaitDevices(seconds, isEnough);
  return listing ? chooseListed(listing.value(), wanted) : listing.error();
}

DeviceChoice awaitDeviceToRun(const std::string& wanted, double seconds,
                              const std::function<bool()>& isInterrupted) {
  Result<bool, Failure> isClaimed = false;
  const auto isEnough = [&](const DeviceListing& listing) {
    if (isInterrupted() || isDecided(listing, wanted)) return true;
    isClaimed = claimCard(wanted);
    return !isClaimed || isClaimed.value();
  };
  const DeviceListingResult listing = awaitDevices(seconds, isEnough);
  if (!isClaimed) return isClaimed.error();
  if (isClaimed.value()) return awaitDevice(wanted, seconds, isInterrupted);
  return listing ? chooseListed(listing.value(), wanted) : listing.error();
}

}  // namespace tolvane::ctl
