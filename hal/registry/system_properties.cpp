#include <string>
#include <utility>
#include <vector>

#include "hal/core_audio.h"
#include "hal/registry/properties.h"
#include "hal/registry/value_room.h"

namespace tolvane::hal {

namespace {

using namespace std::chrono_literals;

/// The list whose size this thread read last, kept for its next read of the data. Size and data then match,
/// and one reading asks each driver once.
struct SizedList {
  std::vector<AudioObjectID> ids;
  Clock::time_point until;
};
thread_local SizedList sizedList;
constexpr auto kSizedListLife = 100ms;

/// The drivers whose devices are missing from this thread's last list.
thread_local std::vector<std::string> silentDrivers;

std::vector<AudioObjectID> newList(Registry& registry) {
  DeviceListing listing = registry.listDevices();
  silentDrivers = std::move(listing.silentDrivers);
  return std::move(listing.devices);
}

std::vector<AudioObjectID> takeList(Registry& registry) {
  const bool fresh = Clock::now() < std::exchange(sizedList.until, {});
  return fresh ? std::exchange(sizedList.ids, {}) : newList(registry);
}

UInt32 deviceListSize(Registry& registry) {
  sizedList = {newList(registry), Clock::now() + kSizedListLife};
  return static_cast<UInt32>(sizedList.ids.size() * sizeof(AudioObjectID));
}

OSStatus readDeviceList(Registry& registry, const ValueRoom& room) {
  return writeArray(room, takeList(registry));
}

template <class Value>
UInt32 sizeOf(Registry& /*registry*/) {
  return sizeof(Value);
}

OSStatus readSilentServers(Registry& /*registry*/, const ValueRoom& room) {
  std::string names;
  for (const std::string& name : silentDrivers) names += (names.empty() ? "" : ", ") + name;
  return writeString(room, names);
}

OSStatus readProblems(Registry& registry, const ValueRoom& room) {
  std::string lines;
  for (const std::string& problem : registry.problems()) lines += (lines.empty() ? "" : "\n") + problem;
  return writeString(room, lines);
}

UInt32 claimSize(Registry& /*registry*/) {
  return 0;
}

/// Of a property that can only be set.
OSStatus readNothing(Registry& /*registry*/, const ValueRoom& /*room*/) {
  return kAudioHardwareUnsupportedOperationError;
}

OSStatus writeClaim(Registry& registry, UInt32 dataSize, const void* data) {
  if (dataSize == 0) return kAudioHardwareBadPropertySizeError;
  return registry.claim({static_cast<const char*>(data), dataSize});
}

OSStatus writePrefetch(Registry& registry, UInt32 dataSize, const void* /*data*/) {
  if (dataSize != sizeof(UInt32)) return kAudioHardwareBadPropertySizeError;
  return registry.prefetch() ? OSStatus{noErr} : kTolvaneExhaustedError;
}

}  // namespace

const std::vector<Property<Registry>>& systemProperties() {
  static const auto* const table = new std::vector<Property<Registry>>{
      {kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal, deviceListSize, readDeviceList,
       nullptr},
      {kTolvanePropertySilentServers, kAudioObjectPropertyScopeGlobal, sizeOf<CFTypeRef>, readSilentServers,
       nullptr},
      {kTolvanePropertyProblems, kAudioObjectPropertyScopeGlobal, sizeOf<CFTypeRef>, readProblems, nullptr},
      {kTolvanePropertyClaim, kAudioObjectPropertyScopeGlobal, claimSize, readNothing, writeClaim},
      {kTolvanePropertyPrefetch, kAudioObjectPropertyScopeGlobal, sizeOf<UInt32>, readNothing, writePrefetch},
  };
  return *table;
}

}  // namespace tolvane::hal
