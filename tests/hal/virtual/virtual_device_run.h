// Runs the virtual device with a test's configuration.
#pragma once

#include <gtest/gtest.h>

#include "hal/hal_client.h"
#include "hal/virtual/virtual_device.h"

namespace tolvane::test {

/// The virtual device in a test's configuration. Each test begins and ends with the default one.
class VirtualDeviceTest : public testing::Test {
 protected:
  /// Waits until a previous session has ended: a stop leaves one behind that takes longer than 0.8 s.
  void configure(const hal::VirtualDeviceConfig& config) {
    ASSERT_TRUE(eventually([&] { return hal::configureVirtualDevice(config) == noErr; }));
  }
  void SetUp() override { configure({}); }
  void TearDown() override { configure({}); }

  /// Runs `cycle` as the callback until `done` returns true.
  template <typename Cycle, typename Done>
  void run(Cycle cycle, const Done& done) {
    RegisteredProc proc(device_, std::move(cycle));
    ASSERT_EQ(proc.start(), noErr);
    EXPECT_TRUE(eventually(done));
    ASSERT_EQ(proc.stop(), noErr);
  }

  const AudioObjectID device_ = deviceList().back();
};

}  // namespace tolvane::test
