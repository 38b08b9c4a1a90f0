// The property tables, one for each kind of object.
#pragma once

#include <memory>
#include <vector>

#include "hal/registry/registry.h"

namespace tolvane::hal {

/// The client's buffer for a value.
struct ValueRoom {
  UInt32* dataSize;  // in: bytes at `data`; out: bytes written
  void* data;
};

/// One property of a kind of object.
template <typename Object>
struct Property {
  AudioObjectPropertySelector selector;
  AudioObjectPropertyScope scope;
  /// The size of the value in bytes. [not-io]
  UInt32 (*size)(Object& object);
  /// Writes the value, or returns kAudioHardwareBadPropertySizeError. [not-io]
  OSStatus (*read)(Object& object, const ValueRoom& room);
  /// Sets the value. Null if the property cannot be set. [not-io]
  OSStatus (*write)(Object& object, UInt32 dataSize, const void* data);
  /// Null for a property of the object itself. A property of its elements: true if the element has a value
  /// now. [not-io]
  bool (*isThere)(Object& object) = nullptr;
};

/// A device and its registry, and the element that is asked for.
struct DeviceObject {
  Registry& registry;
  std::shared_ptr<Device> device;
  AudioObjectPropertyElement element;
};

const std::vector<Property<Registry>>& systemProperties();
const std::vector<Property<DeviceObject>>& deviceProperties();

/// The table's entry for the address; null when the object has no such property.
template <typename Object>
const Property<Object>* find(const std::vector<Property<Object>>& table,
                             const AudioObjectPropertyAddress& address) noexcept {
  for (const Property<Object>& property : table) {
    const bool isOfElement = property.isThere != nullptr;
    if (isOfElement == (address.mElement == kAudioObjectPropertyElementMain)) continue;
    if (property.selector == address.mSelector && property.scope == address.mScope) return &property;
  }
  return nullptr;
}

}  // namespace tolvane::hal
