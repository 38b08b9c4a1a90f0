// A machine where no server runs.
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

using ::testing::IsEmpty;

class PipeWireNoServer : public ::testing::Test {
 protected:
  void SetUp() override {
    ::unsetenv("PIPEWIRE_RUNTIME_DIR");
    ::unsetenv("PIPEWIRE_REMOTE");
  }

  /// Expects no devices, no start and no message.
  static void expectNothing() {
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    const auto driver = hal::makePipeWireDriver();
    for (int call = 0; call < 3; ++call) EXPECT_THAT(driver->devices(), IsEmpty());
    hal::DeviceInfo device;
    device.uid = "pipewire:card";
    device.outputStreams = {1};
    RoutingClient client(device, {});
    EXPECT_EQ(driver->start(device, client).status, kAudioHardwareNotReadyError);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  }
};

TEST_F(PipeWireNoServer, WithoutARuntimeFolder) {
  ::unsetenv("XDG_RUNTIME_DIR");
  ::setenv("HOME", "/nonexistent", 1);
  expectNothing();
}

TEST_F(PipeWireNoServer, WithARuntimeFolderThatHasNoSocket) {
  ::setenv("XDG_RUNTIME_DIR", std::filesystem::temp_directory_path().c_str(), 1);
  expectNothing();
}

TEST_F(PipeWireNoServer, WithARuntimeFolderThatIsNotThere) {
  ::setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
  expectNothing();
}

}  // namespace
}  // namespace tolvane::test
