// The functions of the C surface that run IO on devices.
#include <utility>

#include "base/thread_check.h"
#include "hal/registry/registry.h"
#include "hal/support/exhaustion.h"

using tolvane::hal::onIoThread;
using tolvane::hal::orExhausted;
using tolvane::hal::Registry;

namespace {

/// The checks that start, stop and destroy share.
OSStatus checkProc(AudioObjectID device, AudioDeviceIOProcID procID) {
  if (procID == nullptr || onIoThread()) return kAudioHardwareIllegalOperationError;
  if (device == kAudioObjectSystemObject) return kAudioHardwareBadDeviceError;
  if (!Registry::shared().device(device)) return kAudioHardwareBadObjectError;
  return noErr;
}

/// Makes these checks, then returns the status of the registry's operation.
OSStatus withProc(AudioObjectID device, AudioDeviceIOProcID procID,
                  OSStatus (Registry::*operation)(AudioObjectID, AudioDeviceIOProcID)) {
  return orExhausted([&] {
    const OSStatus status = checkProc(device, procID);
    return status == noErr ? (Registry::shared().*operation)(device, procID) : status;
  });
}

}  // namespace

extern "C" {

OSStatus AudioDeviceCreateIOProcID(AudioObjectID device, AudioDeviceIOProc proc, void* clientData,
                                   AudioDeviceIOProcID* procID) {
  tolvane::checkNotIo();
  if (proc == nullptr || procID == nullptr) return kAudioHardwareIllegalOperationError;
  if (device == kAudioObjectSystemObject) return kAudioHardwareBadDeviceError;
  return orExhausted([&]() -> OSStatus {
    auto found = Registry::shared().device(device);
    if (!found) return kAudioHardwareBadObjectError;
    *procID = Registry::shared().createProc(std::move(found), proc, clientData);
    return noErr;
  });
}

OSStatus AudioDeviceStart(AudioObjectID device, AudioDeviceIOProcID procID) {
  return withProc(device, procID, &Registry::start);
}

OSStatus AudioDeviceStop(AudioObjectID device, AudioDeviceIOProcID procID) {
  return withProc(device, procID, &Registry::stop);
}

OSStatus AudioDeviceDestroyIOProcID(AudioObjectID device, AudioDeviceIOProcID procID) {
  return withProc(device, procID, &Registry::destroyProc);
}

}  // extern "C"
