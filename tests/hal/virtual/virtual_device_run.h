// One run of the virtual device with a configuration of the test's.
#pragma once

#include <gtest/gtest.h>

#include "hal/hal_client.h"
#include "hal/virtual/virtual_device.h"

namespace tolvane::test {

/// The virtual device as a test wants it; afterwards it is what every user finds again.
class VirtualDeviceTest : public testing::Test {
 protected:
  void configure(const hal::VirtualDeviceConfig& config) {
    ASSERT_EQ(hal::configureVirtualDevice(config), noErr);
  }
  void SetUp() override { configure({}); }
  void TearDown() override { configure({}); }

  /// Runs `cycle` until `done` says so.
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
