#include <utility>

#include "hal/registry/properties.h"
#include "hal/registry/value_room.h"

namespace tolvane::hal {

namespace {

using namespace std::chrono_literals;

/// The list whose size a thread has asked for, kept for the data that it asks for next: the two belong
/// together, and no driver is asked twice for one reading.
struct SizedList {
  std::vector<AudioObjectID> ids;
  Clock::time_point until;
};
thread_local SizedList sizedList;
constexpr auto kSizedListLife = 100ms;

std::vector<AudioObjectID> takeList(Registry& registry) {
  const bool fresh = Clock::now() < std::exchange(sizedList.until, {});
  return fresh ? std::exchange(sizedList.ids, {}) : registry.listDevices();
}

UInt32 deviceListSize(Registry& registry) {
  sizedList = {registry.listDevices(), Clock::now() + kSizedListLife};
  return static_cast<UInt32>(sizedList.ids.size() * sizeof(AudioObjectID));
}

OSStatus readDeviceList(Registry& registry, const ValueRoom& room) {
  return writeArray(room, takeList(registry));
}

}  // namespace

const std::vector<Property<Registry>>& systemProperties() {
  static const auto* const table = new std::vector<Property<Registry>>{
      {kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal, deviceListSize, readDeviceList,
       nullptr},
  };
  return *table;
}

}  // namespace tolvane::hal
