// The status that each function returns for a call it cannot carry out.
#include <gtest/gtest.h>

#include "hal/hal_client.h"

namespace tolvane::test {

namespace {

constexpr AudioObjectID kNoObject = 0x7FFFFFFF;

OSStatus silentProc(AudioObjectID, const AudioTimeStamp*, const AudioBufferList*, const AudioTimeStamp*,
                    AudioBufferList*, const AudioTimeStamp*, void*) {
  return noErr;
}

OSStatus deafListener(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void*) {
  return noErr;
}

class Statuses : public testing::Test {
 protected:
  OSStatus sizeStatus(AudioObjectID object, AudioObjectPropertyAddress where) {
    UInt32 size = 77;
    const OSStatus status = AudioObjectGetPropertyDataSize(object, &where, 0, nullptr, &size);
    if (status != noErr) {
      EXPECT_EQ(size, 77U);
    }
    return status;
  }
  OSStatus dataStatus(AudioObjectID object, AudioObjectPropertyAddress where, UInt32 room) {
    UInt32 size = room;
    const OSStatus status = AudioObjectGetPropertyData(object, &where, 0, nullptr, &size, room_);
    if (status != noErr) {
      EXPECT_EQ(size, room);
    }
    return status;
  }

  const AudioObjectID device_ = deviceList().back();
  alignas(16) std::byte room_[4096]{};
};

TEST_F(Statuses, nullPointersComeFirst) {
  const auto name = address(kAudioObjectPropertyName);
  UInt32 size = sizeof room_;
  constexpr OSStatus kIllegal = kAudioHardwareIllegalOperationError;
  EXPECT_EQ(AudioObjectGetPropertyDataSize(kNoObject, nullptr, 0, nullptr, &size), kIllegal);
  EXPECT_EQ(AudioObjectGetPropertyDataSize(device_, &name, 0, nullptr, nullptr), kIllegal);
  EXPECT_EQ(AudioObjectGetPropertyData(kNoObject, nullptr, 0, nullptr, &size, room_), kIllegal);
  EXPECT_EQ(AudioObjectGetPropertyData(device_, &name, 0, nullptr, nullptr, room_), kIllegal);
  EXPECT_EQ(AudioObjectGetPropertyData(device_, &name, 0, nullptr, &size, nullptr), kIllegal);
  EXPECT_EQ(AudioObjectSetPropertyData(kNoObject, nullptr, 0, nullptr, 4, room_), kIllegal);
  EXPECT_EQ(AudioObjectSetPropertyData(kNoObject, &name, 0, nullptr, 4, nullptr), kIllegal);
  EXPECT_EQ(AudioObjectAddPropertyListener(device_, nullptr, deafListener, nullptr), kIllegal);
  EXPECT_EQ(AudioObjectAddPropertyListener(device_, &name, nullptr, nullptr), kIllegal);
  EXPECT_EQ(AudioObjectRemovePropertyListener(device_, nullptr, deafListener, nullptr), kIllegal);
  EXPECT_EQ(AudioObjectRemovePropertyListener(device_, &name, nullptr, nullptr), kIllegal);
  AudioDeviceIOProcID id = nullptr;
  EXPECT_EQ(AudioDeviceCreateIOProcID(kNoObject, nullptr, nullptr, &id), kIllegal);
  EXPECT_EQ(AudioDeviceCreateIOProcID(device_, silentProc, nullptr, nullptr), kIllegal);
  EXPECT_EQ(AudioDeviceStart(device_, nullptr), kIllegal);
  EXPECT_EQ(AudioDeviceStop(device_, nullptr), kIllegal);
  EXPECT_EQ(AudioDeviceDestroyIOProcID(device_, nullptr), kIllegal);
}

TEST_F(Statuses, unknownObjectsAreBad) {
  for (const AudioObjectID object :
       {static_cast<AudioObjectID>(kAudioObjectUnknown), kNoObject, device_ + 1000}) {
    const auto name = address(kAudioObjectPropertyName);
    EXPECT_EQ(sizeStatus(object, name), kAudioHardwareBadObjectError);
    EXPECT_EQ(dataStatus(object, name, 8), kAudioHardwareBadObjectError);
    EXPECT_EQ(AudioObjectSetPropertyData(object, &name, 0, nullptr, 4, room_), kAudioHardwareBadObjectError);
    EXPECT_EQ(AudioObjectAddPropertyListener(object, &name, deafListener, nullptr),
              kAudioHardwareBadObjectError);
    EXPECT_EQ(AudioObjectRemovePropertyListener(object, &name, deafListener, nullptr),
              kAudioHardwareBadObjectError);
    AudioDeviceIOProcID id = nullptr;
    EXPECT_EQ(AudioDeviceCreateIOProcID(object, silentProc, nullptr, &id), kAudioHardwareBadObjectError);
    EXPECT_EQ(id, nullptr);
    EXPECT_EQ(AudioDeviceStart(object, silentProc), kAudioHardwareBadObjectError);
    EXPECT_EQ(AudioDeviceStop(object, silentProc), kAudioHardwareBadObjectError);
    EXPECT_EQ(AudioDeviceDestroyIOProcID(object, silentProc), kAudioHardwareBadObjectError);
  }
}

TEST_F(Statuses, unknownPropertiesScopesAndElements) {
  constexpr OSStatus kUnknown = kAudioHardwareUnknownPropertyError;
  EXPECT_EQ(sizeStatus(device_, address(0x3F3F3F3F)), kUnknown);
  EXPECT_EQ(dataStatus(device_, address(kAudioHardwarePropertyDevices), 4), kUnknown);
  EXPECT_EQ(dataStatus(kAudioObjectSystemObject, address(kAudioObjectPropertyName), 8), kUnknown);
  EXPECT_EQ(dataStatus(device_, address(kAudioDevicePropertyStreamConfiguration), 4096), kUnknown);
  EXPECT_EQ(dataStatus(device_, address(kAudioObjectPropertyName, kAudioObjectPropertyScopeInput), 8),
            kUnknown);
  EXPECT_EQ(dataStatus(device_, {kAudioObjectPropertyName, kAudioObjectPropertyScopeGlobal, 1}, 8), kUnknown);
  const auto bogus = address(0x3F3F3F3F);
  EXPECT_EQ(AudioObjectAddPropertyListener(device_, &bogus, deafListener, nullptr), kUnknown);
  EXPECT_EQ(AudioObjectRemovePropertyListener(device_, &bogus, deafListener, nullptr), kUnknown);
  EXPECT_EQ(AudioObjectSetPropertyData(device_, &bogus, 0, nullptr, 4, room_), kUnknown);
}

TEST_F(Statuses, valuesNeedAllTheirRoom) {
  constexpr OSStatus kSize = kAudioHardwareBadPropertySizeError;
  EXPECT_EQ(dataStatus(device_, address(kAudioObjectPropertyName), 7), kSize);
  EXPECT_EQ(dataStatus(device_, address(kAudioDevicePropertyDeviceUID), 0), kSize);
  EXPECT_EQ(dataStatus(device_, address(kAudioDevicePropertyNominalSampleRate), 4), kSize);
  EXPECT_EQ(dataStatus(device_, address(kAudioDevicePropertyBufferFrameSize), 3), kSize);
  EXPECT_EQ(dataStatus(device_, address(kAudioDevicePropertyBufferFrameSizeRange), 15), kSize);
  EXPECT_EQ(dataStatus(device_, address(kAudioDevicePropertyDeviceIsAlive), 3), kSize);
  EXPECT_EQ(dataStatus(device_, address(kAudioDevicePropertyTransportType), 3), kSize);
  EXPECT_EQ(dataStatus(device_, address(kAudioDeviceProcessorOverload), 3), kSize);
  for (const auto scope : {kAudioObjectPropertyScopeInput, kAudioObjectPropertyScopeOutput}) {
    const auto streams = address(kAudioDevicePropertyStreamConfiguration, scope);
    UInt32 size = 0;
    ASSERT_EQ(AudioObjectGetPropertyDataSize(device_, &streams, 0, nullptr, &size), noErr);
    EXPECT_EQ(dataStatus(device_, streams, size - 1), kSize);
    EXPECT_EQ(dataStatus(device_, streams, size), noErr);
  }
}

TEST_F(Statuses, moreRoomThanNeededComesBackAsTheBytesWritten) {
  const auto rate = address(kAudioDevicePropertyNominalSampleRate);
  UInt32 size = sizeof room_;
  EXPECT_EQ(AudioObjectGetPropertyData(device_, &rate, 0, nullptr, &size, room_), noErr);
  EXPECT_EQ(size, 8U);
}

TEST_F(Statuses, deviceListIsCutAtWholeElements) {
  const auto list = address(kAudioHardwarePropertyDevices);
  for (const UInt32 room : {0U, 3U}) {
    UInt32 size = room;
    EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &list, 0, nullptr, &size, room_), noErr);
    EXPECT_EQ(size, 0U);
  }
  UInt32 size = 7;
  EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &list, 0, nullptr, &size, room_), noErr);
  EXPECT_EQ(size, 4U);
}

TEST_F(Statuses, whatCannotBeSet) {
  const auto name = address(kAudioObjectPropertyName);
  const auto devices = address(kAudioHardwarePropertyDevices);
  EXPECT_EQ(AudioObjectSetPropertyData(device_, &name, 0, nullptr, 8, room_),
            kAudioHardwareUnsupportedOperationError);
  EXPECT_EQ(AudioObjectSetPropertyData(kAudioObjectSystemObject, &devices, 0, nullptr, 4, room_),
            kAudioHardwareUnsupportedOperationError);
}

TEST_F(Statuses, theSystemObjectIsNoDevice) {
  AudioDeviceIOProcID id = nullptr;
  EXPECT_EQ(AudioDeviceCreateIOProcID(kAudioObjectSystemObject, silentProc, nullptr, &id),
            kAudioHardwareBadDeviceError);
  EXPECT_EQ(AudioDeviceStart(kAudioObjectSystemObject, silentProc), kAudioHardwareBadDeviceError);
  EXPECT_EQ(AudioDeviceStop(kAudioObjectSystemObject, silentProc), kAudioHardwareBadDeviceError);
  EXPECT_EQ(AudioDeviceDestroyIOProcID(kAudioObjectSystemObject, silentProc), kAudioHardwareBadDeviceError);
}

TEST_F(Statuses, identifiersAreUniqueAndEndWithTheirRegistration) {
  AudioDeviceIOProcID first = nullptr;
  AudioDeviceIOProcID second = nullptr;
  ASSERT_EQ(AudioDeviceCreateIOProcID(device_, silentProc, nullptr, &first), noErr);
  ASSERT_EQ(AudioDeviceCreateIOProcID(device_, silentProc, nullptr, &second), noErr);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(AudioDeviceStart(device_, silentProc), kAudioHardwareBadDeviceError);
  EXPECT_EQ(AudioDeviceStop(device_, first), noErr);
  EXPECT_EQ(AudioDeviceDestroyIOProcID(device_, first), noErr);
  EXPECT_EQ(AudioDeviceStart(device_, first), kAudioHardwareBadDeviceError);
  EXPECT_EQ(AudioDeviceStop(device_, first), kAudioHardwareBadDeviceError);
  EXPECT_EQ(AudioDeviceDestroyIOProcID(device_, first), kAudioHardwareBadDeviceError);
  EXPECT_EQ(AudioDeviceDestroyIOProcID(device_, second), noErr);
}

}  // namespace

}  // namespace tolvane::test
