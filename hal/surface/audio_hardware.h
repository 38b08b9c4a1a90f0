// Properties of HAL objects, and IO on devices.
//
// Functions that return an OSStatus return noErr or, in this order of checks:
//   kAudioHardwareIllegalOperationError  a null pointer where an object, address, size or result is required;
//                                        a call that the state forbids (each function says which)
//   kAudioHardwareBadObjectError         no such object
//   kAudioHardwareUnknownPropertyError   the object has no such property in that scope and element
//   kAudioHardwareBadPropertySizeError   the size given does not hold the value
// A status is returned, never a crash, whatever the arguments.
#pragma once

#include "hal/surface/core_audio_types.h"

extern "C" {

using AudioObjectID = UInt32;
using AudioDeviceID = AudioObjectID;
using AudioObjectPropertySelector = UInt32;
using AudioObjectPropertyScope = UInt32;
using AudioObjectPropertyElement = UInt32;

struct AudioObjectPropertyAddress {
  AudioObjectPropertySelector mSelector;
  AudioObjectPropertyScope mScope;
  AudioObjectPropertyElement mElement;
};

enum : AudioObjectID {
  kAudioObjectUnknown = 0,
  kAudioObjectSystemObject = 1,
};

enum : UInt32 {
  kAudioObjectPropertyScopeGlobal = 0x676C6F62,  // 'glob'
  kAudioObjectPropertyScopeInput = 0x696E7074,   // 'inpt'
  kAudioObjectPropertyScopeOutput = 0x6F757470,  // 'outp'
  kAudioObjectPropertyElementMain = 0,
};

/// Selectors, with the object that has them and the type of the value.
enum : AudioObjectPropertySelector {
  kAudioHardwarePropertyDevices = 0x64657623,            // 'dev#' system: array of AudioDeviceID
  kAudioObjectPropertyName = 0x6C6E616D,                 // 'lnam' device: CFStringRef, the caller releases
  kAudioDevicePropertyStreamConfiguration = 0x736C6179,  // 'slay' device, input or output: AudioBufferList
  kAudioDevicePropertyDeviceUID = 0x75696420,            // 'uid ' device: CFStringRef, the caller releases
  kAudioDevicePropertyNominalSampleRate = 0x6E737274,    // 'nsrt' device: Float64, Hz
  kAudioDevicePropertyBufferFrameSize = 0x6673697A,      // 'fsiz' device: UInt32, frames a cycle; can be set
  kAudioDevicePropertyBufferFrameSizeRange =
      0x66737A23,                                  // 'fsz#' device: AudioValueRange, what 'fsiz' can be
  kAudioDevicePropertyDeviceIsAlive = 0x6C69766E,  // 'livn' device: UInt32, 1 or 0
  kAudioDevicePropertyTransportType = 0x7472616E,  // 'tran' device: UInt32, a kAudioDeviceTransportType
  kAudioDeviceProcessorOverload = 0x6F766572,      // 'over' device: UInt32, overloads so far
};

/// The values that a property can be set to, both ends included.
struct AudioValueRange {
  Float64 mMinimum;
  Float64 mMaximum;
};

/// What carries a device's audio. The HAL names its own drivers here, one code each.
enum : UInt32 {
  kAudioDeviceTransportTypeUnknown = 0,
  kAudioDeviceTransportTypeAggregate = 0x67727570,  // 'grup'
  kAudioDeviceTransportTypeVirtual = 0x76697274,    // 'virt'
  kAudioDeviceTransportTypeJack = 0x6A61636B,       // 'jack'
  kAudioDeviceTransportTypePipeWire = 0x70697077,   // 'pipw'
  kAudioDeviceTransportTypeAlsa = 0x616C7361,       // 'alsa'
};

enum : OSStatus {
  kAudioHardwareNoError = 0,
  kAudioHardwareNotRunningError = 0x73746F70,            // 'stop'
  kAudioHardwareUnspecifiedError = 0x77686174,           // 'what'
  kAudioHardwareUnknownPropertyError = 0x77686F3F,       // 'who?'
  kAudioHardwareBadPropertySizeError = 0x2173697A,       // '!siz'
  kAudioHardwareIllegalOperationError = 0x6E6F7065,      // 'nope'
  kAudioHardwareBadObjectError = 0x216F626A,             // '!obj'
  kAudioHardwareBadDeviceError = 0x21646576,             // '!dev'
  kAudioHardwareUnsupportedOperationError = 0x756E6F70,  // 'unop'
  kAudioHardwareNotReadyError = 0x6E726479,              // 'nrdy'
  kAudioDevicePermissionsError = 0x21686F67,             // '!hog': somebody else holds the device
};

/// The IO callback: once a cycle, on the device's real-time thread, with all buffers of that very cycle. The
/// input list is read only, the output list is written; both are the HAL's and hold for the call alone. The
/// HAL clears no output: the callback does. It must not lock, wait, allocate without bound or call
/// AudioDeviceStop or AudioDeviceDestroyIOProcID. Its result is ignored. [io-thread]
using AudioDeviceIOProc = OSStatus (*)(AudioObjectID device, const AudioTimeStamp* now,
                                       const AudioBufferList* inputData, const AudioTimeStamp* inputTime,
                                       AudioBufferList* outputData, const AudioTimeStamp* outputTime,
                                       void* clientData);
using AudioDeviceIOProcID = AudioDeviceIOProc;

/// Told that `count` properties of `object` changed. Called on the HAL's notification thread, never on an IO
/// thread and never with a lock of the HAL held, so every function of the HAL may be called from it. [not-io]
using AudioObjectPropertyListenerProc = OSStatus (*)(AudioObjectID object, UInt32 count,
                                                     const AudioObjectPropertyAddress* addresses,
                                                     void* clientData);

/// The size in bytes of a property's value. The system object's 'dev#' asks every driver anew, and the data
/// that the same thread asks for next is of the same list. [not-io]
OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierDataSize, const void* qualifierData,
                                        UInt32* dataSize);

/// The value. `*dataSize` goes in as the room at `data` and comes out as the bytes written. An array shorter
/// than the room shortens it; one longer is cut at whole elements; any other value needs all its room.
/// [not-io]
OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierDataSize, const void* qualifierData, UInt32* dataSize,
                                    void* data);

/// Sets the value, of 'fsiz' alone: within its range, else kAudioHardwareIllegalOperationError. When it has
/// returned, a device that does not run reads the new value; one that runs changes its cycles soon after.
/// Errors: kAudioHardwareUnsupportedOperationError (the property, or this device's, cannot be set), and those
/// of AudioDeviceStart. [not-io]
OSStatus AudioObjectSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierDataSize, const void* qualifierData, UInt32 dataSize,
                                    const void* data);

/// Calls `listener` after each change of the property, until removed. The same listener with the same client
/// data and address is added once, however often it is asked for. [not-io]
OSStatus AudioObjectAddPropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        AudioObjectPropertyListenerProc listener, void* clientData);

/// When it has returned, the listener is not running and will not be called again (called from the listener
/// itself, it will not be called again). Removing what was never added does nothing and succeeds. [not-io]
OSStatus AudioObjectRemovePropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                           AudioObjectPropertyListenerProc listener, void* clientData);

/// Registers a callback on a device, not yet called. `*procID` receives its identifier, unique in the
/// process. Errors: kAudioHardwareBadDeviceError (the object is no device). [not-io]
OSStatus AudioDeviceCreateIOProcID(AudioObjectID device, AudioDeviceIOProc proc, void* clientData,
                                   AudioDeviceIOProcID* procID);

/// Starts calling the callback. Starting a started one does nothing and succeeds. A device that is lost while
/// its callback is started is waited for: when the one with the same 'uid ' is back, the callback is called
/// again with the streams that it was started with, those that the device no longer has being without data.
/// Errors: kAudioHardwareBadDeviceError (the device has gone, or the identifier is not one of its own),
/// kAudioDevicePermissionsError (the device is held by somebody else), kAudioHardwareNotReadyError (the sound
/// server does not answer), kAudioHardwareNotRunningError (stopped meanwhile on another thread),
/// kAudioHardwareUnspecifiedError (the driver failed otherwise); kAudioHardwareIllegalOperationError on an IO
/// thread. [not-io]
OSStatus AudioDeviceStart(AudioObjectID device, AudioDeviceIOProcID procID);

/// Stops calling the callback: when it has returned, within one second whatever the server does (and once the
/// callback, if it is running, has returned), the callback is not running and will not run. Stopping a
/// stopped one does nothing and succeeds. Errors: kAudioHardwareBadDeviceError;
/// kAudioHardwareIllegalOperationError on an IO thread. [not-io]
OSStatus AudioDeviceStop(AudioObjectID device, AudioDeviceIOProcID procID);

/// Stops, as above, and forgets the registration. Errors: as AudioDeviceStop. [not-io]
OSStatus AudioDeviceDestroyIOProcID(AudioObjectID device, AudioDeviceIOProcID procID);

}  // extern "C"
