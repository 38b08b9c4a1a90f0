#include "ctl/devices/events.h"

#include "ctl/devices/property.h"

namespace tolvane::ctl {

namespace {

constexpr AudioObjectPropertySelector kListenedTo[] = {kAudioDeviceProcessorOverload,
                                                       kAudioDevicePropertyDeviceIsAlive};

}  // namespace

DeviceEvents::DeviceEvents(AudioDeviceID device) : device_(device) {
  for (const auto selector : kListenedTo) {
    const AudioObjectPropertyAddress address = globalAddress(selector);
    const OSStatus status = AudioObjectAddPropertyListener(device_, &address, &DeviceEvents::told, this);
    if (status_ == noErr) status_ = status;
  }
}

DeviceEvents::~DeviceEvents() {
  for (const auto selector : kListenedTo) {
    const AudioObjectPropertyAddress address = globalAddress(selector);
    AudioObjectRemovePropertyListener(device_, &address, &DeviceEvents::told, this);
  }
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
