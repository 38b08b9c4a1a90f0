#include "ctl/devices/claim.h"

#include "ctl/devices/property.h"
#include "ctl/devices/wait.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

Result<bool, Failure> claimCard(const std::string& uid) {
  const AudioObjectPropertyAddress claim = globalAddress(kTolvanePropertyClaim);
  const OSStatus status = AudioObjectSetPropertyData(kAudioObjectSystemObject, &claim, 0, nullptr,
                                                     static_cast<UInt32>(uid.size()), uid.data());
  switch (status) {
    case noErr:
      return true;
    case kAudioHardwareBadDeviceError:
    case kAudioHardwareUnknownPropertyError:  // of another HAL
    case kAudioHardwareBadPropertySizeError:  // an empty uid
      return false;
    case kAudioDevicePermissionsError:
      return Failure{about(uid, "a sound server uses this card and keeps it")};
    case kAudioHardwareUnsupportedOperationError:
      return Failure{about(uid, "a sound server uses this card, and there is no session bus to ask for it")};
    case kAudioHardwareNotReadyError:
      return Failure{about(uid, "a sound server uses this card and does not answer")};
    default:
      return Failure{about(uid, "the card cannot be asked for: " + statusText(status))};
  }
}

}  // namespace tolvane::ctl
