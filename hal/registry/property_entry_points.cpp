// The functions of the C surface for properties: they check the arguments, then use the object's table.
#include "base/thread_check.h"
#include "hal/registry/properties.h"
#include "hal/registry/registry.h"
#include "hal/support/exhaustion.h"

namespace tolvane::hal {

namespace {

/// Calls `use(object, property)`. Returns an error status if the object or the property does not exist.
template <typename Use>
OSStatus useProperty(AudioObjectID id, const AudioObjectPropertyAddress& address, const Use& use) {
  Registry& registry = Registry::shared();
  if (id == kAudioObjectSystemObject) {
    const auto* const property = find(systemProperties(), address);
    return property == nullptr ? kAudioHardwareUnknownPropertyError : use(registry, *property);
  }
  DeviceObject object{registry, registry.device(id), address.mElement};
  if (!object.device) return kAudioHardwareBadObjectError;
  const auto* const property = find(deviceProperties(), address);
  return property == nullptr ? kAudioHardwareUnknownPropertyError : use(object, *property);
}

/// The same, with kAudioHardwareUnknownPropertyError if the property has no value now. Listeners do not ask
/// for this: a value may come and go.
template <typename Use>
OSStatus withValue(AudioObjectID id, const AudioObjectPropertyAddress& address, const Use& use) {
  return orExhausted([&] {
    return useProperty(id, address, [&](auto& object, const auto& property) -> OSStatus {
      const bool isThere = property.isThere == nullptr || property.isThere(object);
      return isThere ? use(object, property) : OSStatus{kAudioHardwareUnknownPropertyError};
    });
  });
}

template <typename Use>
OSStatus withProperty(AudioObjectID id, const AudioObjectPropertyAddress& address, const Use& use) {
  return orExhausted([&] { return useProperty(id, address, use); });
}

}  // namespace

}  // namespace tolvane::hal

using tolvane::checkNotIo;
using tolvane::hal::Registry;
using tolvane::hal::withProperty;
using tolvane::hal::withValue;

extern "C" {

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 /*qualifierDataSize*/, const void* /*qualifierData*/,
                                        UInt32* dataSize) {
  checkNotIo();
  if (address == nullptr || dataSize == nullptr) return kAudioHardwareIllegalOperationError;
  return withValue(object, *address, [&](auto& found, const auto& property) -> OSStatus {
    *dataSize = property.size(found);
    return noErr;
  });
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 /*qualifierDataSize*/, const void* /*qualifierData*/,
                                    UInt32* dataSize, void* data) {
  checkNotIo();
  if (address == nullptr || dataSize == nullptr || data == nullptr)
    return kAudioHardwareIllegalOperationError;
  return withValue(object, *address, [&](auto& found, const auto& property) -> OSStatus {
    return property.read(found, {dataSize, data});
  });
}

OSStatus AudioObjectSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 /*qualifierDataSize*/, const void* /*qualifierData*/,
                                    UInt32 dataSize, const void* data) {
  checkNotIo();
  if (address == nullptr || data == nullptr) return kAudioHardwareIllegalOperationError;
  return withValue(object, *address, [&](auto& found, const auto& property) -> OSStatus {
    if (property.write == nullptr) return kAudioHardwareUnsupportedOperationError;
    return property.write(found, dataSize, data);
  });
}

OSStatus AudioObjectAddPropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        AudioObjectPropertyListenerProc listener, void* clientData) {
  checkNotIo();
  if (address == nullptr || listener == nullptr) return kAudioHardwareIllegalOperationError;
  return withProperty(object, *address, [&](auto& /*found*/, const auto& /*property*/) -> OSStatus {
    const bool isAdded = Registry::shared().notifier().add(object, *address, listener, clientData);
    return isAdded ? OSStatus{noErr} : kTolvaneExhaustedError;
  });
}

OSStatus AudioObjectRemovePropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                           AudioObjectPropertyListenerProc listener, void* clientData) {
  checkNotIo();
  if (address == nullptr || listener == nullptr) return kAudioHardwareIllegalOperationError;
  return withProperty(object, *address, [&](auto& /*found*/, const auto& /*property*/) -> OSStatus {
    Registry::shared().notifier().remove(object, *address, listener, clientData);
    return noErr;
  });
}

}  // extern "C"
