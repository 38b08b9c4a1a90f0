#include "alsa_guest/guest_machine.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "hal/hal_client.h"
#include "support/eventually.h"

namespace tolvane::test {

bool runInGuest(const std::string& command) {
  const std::string line = "chroot /run/guest /bin/sh -c '" + command + "'";
  return std::system(line.c_str()) == 0;  // NOLINT(cert-env33-c): a test's own words
}

std::optional<hal::DeviceInfo> find(hal::Driver& driver, const std::string& uid) {
  const auto devices = driver.devices();
  const auto found = std::find_if(devices.begin(), devices.end(),
                                  [&](const hal::DeviceInfo& device) { return device.uid == uid; });
  if (found == devices.end()) return std::nullopt;
  return *found;
}

AudioObjectID deviceOf(const std::string& uid) {
  for (const AudioObjectID id : deviceList()) {
    if (stringOf(id, kAudioDevicePropertyDeviceUID) == uid) return id;
  }
  return kAudioObjectUnknown;
}

namespace {

/// What the list has instead, and which drivers it lacks.
std::string listedUids() {
  std::string uids;
  for (const AudioObjectID id : deviceList()) uids += stringOf(id, kAudioDevicePropertyDeviceUID) + "\n";
  return uids + "without: " + stringOf(kAudioObjectSystemObject, kTolvanePropertySilentServers);
}

}  // namespace

AudioObjectID expectDeviceOf(const std::string& uid) {
  AudioObjectID found = kAudioObjectUnknown;
  EXPECT_TRUE(eventually([&] { return (found = deviceOf(uid)) != kAudioObjectUnknown; })) << listedUids();
  return found;
}

bool isAlive(AudioObjectID device) {
  return valueOf<UInt32>(device, kAudioDevicePropertyDeviceIsAlive) == 1;
}

std::string pcmStatus(const std::string& cardId, const std::string& pcm) {
  std::ostringstream text;
  text << std::ifstream("/proc/asound/" + cardId + "/" + pcm + "/sub0/status").rdbuf();
  return text.str();
}

}  // namespace tolvane::test
