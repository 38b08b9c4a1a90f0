// The HAL on two scripted drivers.
#pragma once

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "hal/hal_client.h"
#include "hal/registry/registry.h"
#include "hal/registry/scripted_driver.h"
#include "hal/virtual/virtual_driver.h"

namespace tolvane::test {

/// How often a listener was called.
struct Heard {
  std::atomic<int> count{0};
};

inline OSStatus hear(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void* clientData) {
  ++static_cast<Heard*>(clientData)->count;
  return noErr;
}

/// Listens to one property for the lifetime of the object.
class Listening {
 public:
  Listening(AudioObjectID object, AudioObjectPropertySelector selector)
      : object_(object), address_(address(selector)) {
    EXPECT_EQ(AudioObjectAddPropertyListener(object_, &address_, hear, &heard_), noErr);
  }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;
  ~Listening() { EXPECT_EQ(AudioObjectRemovePropertyListener(object_, &address_, hear, &heard_), noErr); }

  [[nodiscard]] int count() const { return heard_.count.load(); }
  [[nodiscard]] bool hears(int times) const {
    return eventually([&] { return heard_.count.load() >= times; });
  }

 private:
  AudioObjectID object_;
  AudioObjectPropertyAddress address_;
  Heard heard_;
};

class ScriptedHal : public testing::Test {
 protected:
  void SetUp() override { useScripts(true); }
  void TearDown() override {
    for (Script* script : {&first_, &second_}) {
      for (Latch* latch : {&script->listing, &script->starting, &script->ending, &script->setting})
        latch->open();
    }
    std::vector<std::unique_ptr<hal::Driver>> drivers;
    drivers.push_back(hal::makeVirtualDriver());
    hal::Registry::shared().useDrivers(std::move(drivers));
  }

  void useScripts(bool notify) {
    first_.setNotifies(notify);
    second_.setNotifies(notify);
    std::vector<std::unique_ptr<hal::Driver>> drivers;
    drivers.push_back(first_.makeDriver());
    drivers.push_back(second_.makeDriver());
    hal::Registry::shared().useDrivers(std::move(drivers));
  }

  /// Gives the first script one device and returns its identifier from the list.
  AudioObjectID listOne(std::size_t inputs = 2, std::size_t outputs = 2) {
    first_.setDevices({scriptedDevice("one", inputs, outputs)});
    const auto list = deviceList();
    EXPECT_EQ(list.size(), 1U);
    return list.at(0);
  }

  static bool alive(AudioObjectID device) {
    return valueOf<UInt32>(device, kAudioDevicePropertyDeviceIsAlive) == 1;
  }

  // Leaked: a driver's threads use them as long as the process lives.
  Script& first_ = *new Script;
  Script& second_ = *new Script;
};

}  // namespace tolvane::test
