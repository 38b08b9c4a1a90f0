// The IO half of the C surface.
#include <utility>

#include "hal/registry/registry.h"

using tolvane::hal::onIoThread;
using tolvane::hal::Registry;

namespace {

/// The checks that starting, stopping and destroying have in common.
OSStatus checkProc(AudioObjectID device, AudioDeviceIOProcID procID) {
  if (procID == nullptr || onIoThread()) return kAudioHardwareIllegalOperationError;
  if (device == kAudioObjectSystemObject) return kAudioHardwareBadDeviceError;
  if (!Registry::shared().device(device)) return kAudioHardwareBadObjectError;
  return noErr;
}

}  // namespace

extern "C" {

OSStatus AudioDeviceCreateIOProcID(AudioObjectID device, AudioDeviceIOProc proc, void* clientData,
                                   AudioDeviceIOProcID* procID) {
  if (proc == nullptr || procID == nullptr) return kAudioHardwareIllegalOperationError;
  if (device == kAudioObjectSystemObject) return kAudioHardwareBadDeviceError;
  auto found = Registry::shared().device(device);
  if (!found) return kAudioHardwareBadObjectError;
  *procID = Registry::shared().createProc(std::move(found), proc, clientData);
  return noErr;
}

OSStatus AudioDeviceStart(AudioObjectID device, AudioDeviceIOProcID procID) {
  const OSStatus status = checkProc(device, procID);
  return status == noErr ? Registry::shared().start(device, procID) : status;
}

OSStatus AudioDeviceStop(AudioObjectID device, AudioDeviceIOProcID procID) {
  const OSStatus status = checkProc(device, procID);
  return status == noErr ? Registry::shared().stop(device, procID) : status;
}

OSStatus AudioDeviceDestroyIOProcID(AudioObjectID device, AudioDeviceIOProcID procID) {
  const OSStatus status = checkProc(device, procID);
  return status == noErr ? Registry::shared().destroyProc(device, procID) : status;
}

}  // extern "C"
