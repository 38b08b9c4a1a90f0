// The emulated machine that these tests run on, its cards and their drivers.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "hal/core_audio.h"
#include "hal/driver/driver.h"

namespace tolvane::test {

/// Runs a command line in the machine's own small system, which has the kernel's modules. True if it
/// succeeds.
bool runInGuest(const std::string& command);

/// The driver's listed device with this uid.
std::optional<hal::DeviceInfo> find(hal::Driver& driver, const std::string& uid);

/// The HAL's device with this uid; kAudioObjectUnknown if it is not listed.
AudioObjectID deviceOf(const std::string& uid);

/// The same, but waits, because the machine takes time to load what lists devices. Fails the test if there is
/// none.
AudioObjectID expectDeviceOf(const std::string& uid);

/// True while the HAL's device is there.
bool isAlive(AudioObjectID device);

/// The status text of a PCM, as in "pcm0p", of the card with this lasting identity.
std::string pcmStatus(const std::string& cardId, const std::string& pcm);

}  // namespace tolvane::test
