// tolvanectl check with a device: the names of the routes' channels, on a scripted HAL.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/check/command.h"
#include "ctl/support/files.h"
#include "support/scripted_hal.h"

namespace tolvane::ctl {
namespace {

using testing::HasSubstr;

class CheckWithDevice : public testing::Test {
 protected:
  CheckWithDevice() {
    hal_.devices.push_back({.id = 7,
                            .name = "Box",
                            .inputStreams = {2},
                            .outputStreams = {2},
                            .uid = "jack:box",
                            .inputs = {{"Kick"}},
                            .outputs = {{}, {"Right"}}});
    options_.paths = {folder_ / "patch.json"};
    options_.waitSeconds = 0.0;
    test::writePatch(options_.paths[0], {{0, 1, 0.5F, true}, {5, 1, 1.0F, true}});
  }

  ExitStatus check() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const ExitStatus status = checkCommand(options_);
    std::fflush(stdout);
    out_ = testing::internal::GetCapturedStdout();
    err_ = testing::internal::GetCapturedStderr();
    return status;
  }

  test::TemporaryFolder folder_;
  test::ScriptedHal hal_;
  CheckOptions options_;
  std::string out_;
  std::string err_;
};

TEST_F(CheckWithDevice, PrintsItsChannelsNames) {
  for (const char* device : {"Box", "bo", "7", "jack:box"}) {
    options_.device = device;
    EXPECT_EQ(check(), ExitStatus::done) << device << err_;
    EXPECT_EQ(out_, options_.paths[0] +
                        ":\ninput  output  gain    dB  active  input name  output name\n"
                        "    1       2   0.5  -6.0  yes     Kick        Right\n"
                        "    6       2   1.0   0.0  yes     -           Right\n");
  }
}

TEST_F(CheckWithDevice, AsksNoDeviceWithoutOne) {
  EXPECT_EQ(check(), ExitStatus::done);
  EXPECT_THAT(out_, HasSubstr("active\n"));
  EXPECT_TRUE(hal_.calls().empty());
}

TEST_F(CheckWithDevice, ChecksNothingIfThereIsNoSuchDevice) {
  options_.device = "Piano";
  EXPECT_EQ(check(), ExitStatus::noSuchDevice);
  EXPECT_EQ(out_, "");
  EXPECT_THAT(err_, HasSubstr("no device is called \"Piano\""));
}

}  // namespace
}  // namespace tolvane::ctl
