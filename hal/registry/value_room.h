// Writes values into the client's buffer.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "hal/registry/properties.h"
#include "hal/surface/cf_string.h"

namespace tolvane::hal {

/// Writes the whole value, or nothing if the buffer is too small.
template <typename Value>
OSStatus writeValue(const ValueRoom& room, const Value& value) noexcept {
  if (*room.dataSize < sizeof value) return kAudioHardwareBadPropertySizeError;
  std::memcpy(room.data, &value, sizeof value);
  *room.dataSize = sizeof value;
  return noErr;
}

/// Writes as many whole elements as fit.
template <typename Element>
OSStatus writeArray(const ValueRoom& room, const std::vector<Element>& elements) noexcept {
  const std::size_t count = std::min(elements.size(), *room.dataSize / sizeof(Element));
  if (count != 0) std::memcpy(room.data, elements.data(), count * sizeof(Element));
  *room.dataSize = static_cast<UInt32>(count * sizeof(Element));
  return noErr;
}

/// Writes a new reference, which the client then owns.
inline OSStatus writeString(const ValueRoom& room, const std::string& text) {
  if (*room.dataSize < sizeof(CFTypeRef)) return kAudioHardwareBadPropertySizeError;
  return writeValue<CFTypeRef>(room, CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8));
}

}  // namespace tolvane::hal
