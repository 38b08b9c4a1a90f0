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
  kAudioHardwarePropertyDevices = 0x64657623,    // 'dev#' system: array of AudioDeviceID
  kAudioObjectPropertyName = 0x6C6E616D,         // 'lnam' device: CFStringRef, the caller releases
  kAudioObjectPropertyElementName = 0x6C63686E,  // 'lchn' device, input or output, element: the channel from
                                                 // 1; CFStringRef, the caller releases. Unknown if the
                                                 // channel has no name.
  kAudioDevicePropertyStreamConfiguration = 0x736C6179,  // 'slay' device, input or output: AudioBufferList
  kAudioDevicePropertyDeviceUID = 0x75696420,            // 'uid ' device: CFStringRef, the caller releases
  kAudioDevicePropertyNominalSampleRate = 0x6E737274,    // 'nsrt' device: Float64, Hz, settable
  kAudioDevicePropertyAvailableNominalSampleRates =
      0x6E737223,                                    // 'nsr#' device: array of AudioValueRange, Hz
  kAudioDevicePropertyBufferFrameSize = 0x6673697A,  // 'fsiz' device: UInt32, frames per cycle, settable
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

/// The transport of a device's audio. Each driver of this HAL has its own code.
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

/// The IO callback. The HAL calls it once per cycle, on the device's real-time thread, with all buffers of
/// that cycle. The callback reads the input list and writes the output list. The HAL owns both lists; they
/// are valid only during the call. The HAL clears no output: the callback does. The callback must not lock,
/// wait, allocate without bound or call AudioDeviceStop or AudioDeviceDestroyIOProcID. Its result is ignored.
/// [io-thread]
using AudioDeviceIOProc = OSStatus (*)(AudioObjectID device, const AudioTimeStamp* now,
                                       const AudioBufferList* inputData, const AudioTimeStamp* inputTime,
                                       AudioBufferList* outputData, const AudioTimeStamp* outputTime,
                                       void* clientData);
using AudioDeviceIOProcID = AudioDeviceIOProc;

/// Called after `count` properties of `object` changed. The HAL calls it on its notification thread, never on
/// an IO thread, and holds no lock, so the listener may call every function of the HAL. [not-io]
using AudioObjectPropertyListenerProc = OSStatus (*)(AudioObjectID object, UInt32 count,
                                                     const AudioObjectPropertyAddress* addresses,
                                                     void* clientData);

/// Gets the size of a property's value in bytes. A call for the system object's 'dev#' asks every driver
/// again. If the same thread reads the data within 100 ms, it gets the same list. [not-io]
OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierDataSize, const void* qualifierData,
                                        UInt32* dataSize);

/// Gets the value. `*dataSize` is the bytes at `data` on entry, the bytes written on return. An array that
/// does not fit is cut at whole elements; any other value must fit whole. [not-io]
OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierDataSize, const void* qualifierData, UInt32* dataSize,
                                    void* data);

/// Sets the value. Only 'fsiz' and 'nsrt' can be set, and this HAL's 'tper', to a value that 'fsz#', 'nsr#'
/// or 'tpr#' has, else kAudioHardwareIllegalOperationError, and what hal/surface/rehearsal.h declares. After
/// the return, a device that is not running reports the new value, and the channels that it has with it. A
/// running one changes the frames of its cycles soon after; its rate and its periods cannot be set. Errors:
/// kAudioHardwareUnsupportedOperationError (the property, or this device's, cannot be set, or not now), and
/// those of AudioDeviceStart. [not-io]
OSStatus AudioObjectSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierDataSize, const void* qualifierData, UInt32 dataSize,
                                    const void* data);

/// Calls `listener` after each change of the property, until it is removed. Adding the same listener again
/// with the same client data and address does nothing and succeeds. A channel's name can be listened to
/// before the channel has one. [not-io]
OSStatus AudioObjectAddPropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        AudioObjectPropertyListenerProc listener, void* clientData);

/// Removes a listener. After the return the listener is not running and is not called again. A listener that
/// removes itself finishes its call and is not called again. Removing a listener that was never added does
/// nothing and succeeds. [not-io]
OSStatus AudioObjectRemovePropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                           AudioObjectPropertyListenerProc listener, void* clientData);

/// Registers a callback on a device without starting it. `*procID` receives an identifier, unique in the
/// process. Errors: kAudioHardwareBadDeviceError (the object is no device). [not-io]
OSStatus AudioDeviceCreateIOProcID(AudioObjectID device, AudioDeviceIOProc proc, void* clientData,
                                   AudioDeviceIOProcID* procID);

/// Starts calling the callback. Starting a started one does nothing and succeeds. If the device's driver was
/// too late for the last list of devices, waits up to 0.8 s for its answer.
///
/// If the device is lost while its callback is started, the HAL waits for it. When a device with the same
/// 'uid ' is back, the HAL calls the callback again with the streams that it was started with. Streams that
/// the device no longer has are without data.
///
/// Errors: kAudioHardwareBadDeviceError (the device is gone, or the identifier is not one of its own),
/// kAudioDevicePermissionsError (somebody else holds the device), kAudioHardwareNotReadyError (the sound
/// server does not answer), kAudioHardwareNotRunningError (another thread stopped the callback meanwhile),
/// kAudioHardwareUnspecifiedError (the driver failed otherwise); kAudioHardwareIllegalOperationError on an IO
/// thread. [not-io]
OSStatus AudioDeviceStart(AudioObjectID device, AudioDeviceIOProcID procID);

/// Stops calling the callback. After the return the callback is not running and does not run again. Returns
/// within one second, whatever the server does, but never before a running callback has returned. Stopping a
/// stopped one does nothing and succeeds. Errors: kAudioHardwareBadDeviceError;
/// kAudioHardwareIllegalOperationError on an IO thread. [not-io]
OSStatus AudioDeviceStop(AudioObjectID device, AudioDeviceIOProcID procID);

/// Stops like AudioDeviceStop and removes the registration. Errors: as AudioDeviceStop. [not-io]
OSStatus AudioDeviceDestroyIOProcID(AudioObjectID device, AudioDeviceIOProcID procID);

}  // extern "C"
