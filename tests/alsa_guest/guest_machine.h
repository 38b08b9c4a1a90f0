// The emulated machine that these tests run on, its cards and their drivers.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "hal/core_audio.h"
#include "hal/driver/driver.h"

namespace tolvane::test {

/// Runs a command line of the machine's own small system, which has the kernel's modules; true when it ended
/// well.
bool runInGuest(const std::string& command);

/// The device of that identity among what the driver lists.
std::optional<hal::DeviceInfo> find(hal::Driver& driver, const std::string& uid);

/// The HAL's device of that identity; kAudioObjectUnknown when none is listed.
AudioObjectID deviceOf(const std::string& uid);

/// The same, given the time that the machine takes to load what lists devices; none fails the test.
AudioObjectID expectDeviceOf(const std::string& uid);

/// The status text of a card's PCM, as in "pcm0p", with the card by its lasting identity.
std::string pcmStatus(const std::string& cardId, const std::string& pcm);

}  // namespace tolvane::test
