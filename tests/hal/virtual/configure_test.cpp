// The virtual device can be configured only between runs.
#include <gtest/gtest.h>

#include "hal/virtual/virtual_device_run.h"

namespace tolvane::test {

namespace {

class ConfigureVirtualDevice : public VirtualDeviceTest {};

TEST_F(ConfigureVirtualDevice, isRefusedWhileItRuns) {
  RegisteredProc proc(device_, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  hal::VirtualDeviceConfig config;
  config.inputStreams = {7};
  EXPECT_EQ(hal::configureVirtualDevice(config), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(streamsOf(device_, kAudioObjectPropertyScopeInput), (std::vector<UInt32>{2, 16}));
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_EQ(hal::configureVirtualDevice(config), noErr);
  EXPECT_EQ(streamsOf(device_, kAudioObjectPropertyScopeInput), (std::vector<UInt32>{7}));
}

TEST_F(ConfigureVirtualDevice, isRefusedUntilTheLastRunHasEnded) {
  RegisteredProc one(device_, [](auto&, auto&) {});
  RegisteredProc two(device_, [](auto&, auto&) {});
  ASSERT_EQ(one.start(), noErr);
  ASSERT_EQ(two.start(), noErr);
  ASSERT_EQ(one.stop(), noErr);
  EXPECT_EQ(hal::configureVirtualDevice({}), kAudioHardwareIllegalOperationError);
  ASSERT_EQ(two.stop(), noErr);
  EXPECT_EQ(hal::configureVirtualDevice({}), noErr);
}

}  // namespace

}  // namespace tolvane::test
