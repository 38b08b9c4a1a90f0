#include "ctl/devices/events.h"

#include <algorithm>
#include <iterator>

#include "ctl/devices/property.h"

namespace tolvane::ctl {

namespace {

constexpr AudioObjectPropertyAddress kListenedTo[] = {globalAddress(kAudioDeviceProcessorOverload),
                                                      globalAddress(kAudioDevicePropertyDeviceIsAlive)};

// Only this program's own HAL has these.
constexpr AudioObjectPropertyAddress kListenedToIfKnown[] = {
    {kTolvaneDevicePropertyRemovedLinks, kAudioObjectPropertyScopeInput, kAudioObjectPropertyElementMain},
    {kTolvaneDevicePropertyRemovedLinks, kAudioObjectPropertyScopeOutput, kAudioObjectPropertyElementMain}};

}  // namespace

DeviceEvents::DeviceEvents(AudioDeviceID device) : device_(device) {
  for (const AudioObjectPropertyAddress& address : kListenedTo) {
    const OSStatus status = AudioObjectAddPropertyListener(device_, &address, &DeviceEvents::told, this);
    if (status_ == noErr) status_ = status;
  }
  for (const AudioObjectPropertyAddress& address : kListenedToIfKnown) {
    AudioObjectAddPropertyListener(device_, &address, &DeviceEvents::told, this);
  }
}

DeviceEvents::~DeviceEvents() {
  const auto remove = [this](const AudioObjectPropertyAddress& address) {
    AudioObjectRemovePropertyListener(device_, &address, &DeviceEvents::told, this);
  };
  std::for_each(std::begin(kListenedTo), std::end(kListenedTo), remove);
  std::for_each(std::begin(kListenedToIfKnown), std::end(kListenedToIfKnown), remove);
}

bool DeviceEvents::isAlive() const {
  while (wake_.next()) {
  }
  return deviceProperty<UInt32>(device_, kAudioDevicePropertyDeviceIsAlive).value_or(0) != 0;
}

OSStatus DeviceEvents::told(AudioObjectID /*device*/, UInt32 count,
                            const AudioObjectPropertyAddress* addresses, void* clientData) {
  auto& events = *static_cast<DeviceEvents*>(clientData);
  for (UInt32 i = 0; i < count; ++i) {
    if (addresses[i].mSelector == kAudioDeviceProcessorOverload) {
      ++events.overloads_;
    } else {
      events.wake_.wake(1);
    }
  }
  return noErr;
}

}  // namespace tolvane::ctl
