// A stand-in for the macOS framework's header: declarations only, enough to compile against, never to link.
// It has what macOS has and nothing of ours, so that a use of our own HAL's additions fails to compile.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

struct AudioBuffer {
  UInt32 mNumberChannels;
  UInt32 mDataByteSize;
  void* mData;
};
typedef struct AudioBuffer AudioBuffer;

struct AudioBufferList {
  UInt32 mNumberBuffers;
  AudioBuffer mBuffers[1];
};
typedef struct AudioBufferList AudioBufferList;

struct AudioValueRange {
  Float64 mMinimum;
  Float64 mMaximum;
};
typedef struct AudioValueRange AudioValueRange;

struct SMPTETime {
  SInt16 mSubframes;
  SInt16 mSubframeDivisor;
  UInt32 mCounter;
  UInt32 mType;
  UInt32 mFlags;
  SInt16 mHours;
  SInt16 mMinutes;
  SInt16 mSeconds;
  SInt16 mFrames;
};
typedef struct SMPTETime SMPTETime;

struct AudioTimeStamp {
  Float64 mSampleTime;
  UInt64 mHostTime;
  Float64 mRateScalar;
  UInt64 mWordClockTime;
  SMPTETime mSMPTETime;
  UInt32 mFlags;
  UInt32 mReserved;
};
typedef struct AudioTimeStamp AudioTimeStamp;

typedef UInt32 AudioObjectID;
typedef AudioObjectID AudioDeviceID;
typedef UInt32 AudioObjectPropertySelector;
typedef UInt32 AudioObjectPropertyScope;
typedef UInt32 AudioObjectPropertyElement;

struct AudioObjectPropertyAddress {
  AudioObjectPropertySelector mSelector;
  AudioObjectPropertyScope mScope;
  AudioObjectPropertyElement mElement;
};
typedef struct AudioObjectPropertyAddress AudioObjectPropertyAddress;

enum : AudioObjectID { kAudioObjectUnknown = 0 };
enum : AudioObjectID { kAudioObjectSystemObject = 1 };
enum : AudioObjectPropertyScope {
  kAudioObjectPropertyScopeGlobal = 0x676C6F62,
  kAudioObjectPropertyScopeInput = 0x696E7074,
  kAudioObjectPropertyScopeOutput = 0x6F757470,
};
enum : AudioObjectPropertyElement { kAudioObjectPropertyElementMain = 0 };
enum : AudioObjectPropertySelector {
  kAudioHardwarePropertyDevices = 0x64657623,
  kAudioObjectPropertyName = 0x6C6E616D,
  kAudioObjectPropertyElementName = 0x6C63686E,
  kAudioDevicePropertyStreamConfiguration = 0x736C6179,
  kAudioDevicePropertyDeviceUID = 0x75696420,
  kAudioDevicePropertyNominalSampleRate = 0x6E737274,
  kAudioDevicePropertyAvailableNominalSampleRates = 0x6E737223,
  kAudioDevicePropertyBufferFrameSize = 0x6673697A,
  kAudioDevicePropertyBufferFrameSizeRange = 0x66737A23,
  kAudioDevicePropertyDeviceIsAlive = 0x6C69766E,
  kAudioDevicePropertyTransportType = 0x7472616E,
  kAudioDeviceProcessorOverload = 0x6F766572,
};
enum : UInt32 {
  kAudioDeviceTransportTypeUnknown = 0,
  kAudioDeviceTransportTypeBuiltIn = 0x626C746E,
  kAudioDeviceTransportTypeAggregate = 0x67727570,
  kAudioDeviceTransportTypeVirtual = 0x76697274,
  kAudioDeviceTransportTypePCI = 0x70636920,
  kAudioDeviceTransportTypeUSB = 0x75736220,
  kAudioDeviceTransportTypeFireWire = 0x31333934,
  kAudioDeviceTransportTypeBluetooth = 0x626C7565,
  kAudioDeviceTransportTypeHDMI = 0x68646D69,
  kAudioDeviceTransportTypeDisplayPort = 0x64707274,
  kAudioDeviceTransportTypeAirPlay = 0x61697270,
  kAudioDeviceTransportTypeAVB = 0x65617662,
  kAudioDeviceTransportTypeThunderbolt = 0x7468756E,
};
enum : OSStatus {
  kAudioHardwareNoError = 0,
  kAudioHardwareNotRunningError = 0x73746F70,
  kAudioHardwareUnspecifiedError = 0x77686174,
  kAudioHardwareUnknownPropertyError = 0x77686F3F,
  kAudioHardwareBadPropertySizeError = 0x2173697A,
  kAudioHardwareIllegalOperationError = 0x6E6F7065,
  kAudioHardwareBadObjectError = 0x216F626A,
  kAudioHardwareBadDeviceError = 0x21646576,
  kAudioHardwareUnsupportedOperationError = 0x756E6F70,
  kAudioHardwareNotReadyError = 0x6E726479,
  kAudioDevicePermissionsError = 0x21686F67,
};

typedef OSStatus (*AudioDeviceIOProc)(AudioObjectID inDevice, const AudioTimeStamp* inNow,
                                      const AudioBufferList* inInputData, const AudioTimeStamp* inInputTime,
                                      AudioBufferList* outOutputData, const AudioTimeStamp* inOutputTime,
                                      void* inClientData);
typedef AudioDeviceIOProc AudioDeviceIOProcID;
typedef OSStatus (*AudioObjectPropertyListenerProc)(AudioObjectID inObjectID, UInt32 inNumberAddresses,
                                                    const AudioObjectPropertyAddress* inAddresses,
                                                    void* inClientData);

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID inObjectID, const AudioObjectPropertyAddress* inAddress,
                                        UInt32 inQualifierDataSize, const void* inQualifierData,
                                        UInt32* outDataSize);
OSStatus AudioObjectGetPropertyData(AudioObjectID inObjectID, const AudioObjectPropertyAddress* inAddress,
                                    UInt32 inQualifierDataSize, const void* inQualifierData,
                                    UInt32* ioDataSize, void* outData);
OSStatus AudioObjectSetPropertyData(AudioObjectID inObjectID, const AudioObjectPropertyAddress* inAddress,
                                    UInt32 inQualifierDataSize, const void* inQualifierData,
                                    UInt32 inDataSize, const void* inData);
OSStatus AudioObjectAddPropertyListener(AudioObjectID inObjectID, const AudioObjectPropertyAddress* inAddress,
                                        AudioObjectPropertyListenerProc inListener, void* inClientData);
OSStatus AudioObjectRemovePropertyListener(AudioObjectID inObjectID,
                                           const AudioObjectPropertyAddress* inAddress,
                                           AudioObjectPropertyListenerProc inListener, void* inClientData);
OSStatus AudioDeviceCreateIOProcID(AudioObjectID inDevice, AudioDeviceIOProc inProc, void* inClientData,
                                   AudioDeviceIOProcID* outIOProcID);
OSStatus AudioDeviceStart(AudioObjectID inDevice, AudioDeviceIOProcID inProcID);
OSStatus AudioDeviceStop(AudioObjectID inDevice, AudioDeviceIOProcID inProcID);
OSStatus AudioDeviceDestroyIOProcID(AudioObjectID inDevice, AudioDeviceIOProcID inIOProcID);
}
