// tolvanectl run on a device that refuses, overloads, goes and comes back, as a scripted HAL makes it do.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "ctl/files.h"
#include "ctl/run_command.h"
#include "support/scripted_hal.h"

namespace tolvane::ctl {
namespace {

using testing::HasSubstr;

class RunDevice : public testing::Test {
 protected:
  RunDevice() {
    hal_.devices.push_back({.id = 7, .name = "Box", .inputStreams = {2}, .outputStreams = {2}});
    options_.patchPath = folder_ / "patch.json";
    test::writePatch(options_.patchPath, {{0, 1, 0.5F, true}});
  }

  /// Runs `then` inside the HAL's start, before the loop: what it does is all there when the loop begins.
  void atStart(const std::function<void()>& then) {
    hal_.onCall = [=](const std::string& call) {
      if (call.starts_with("AudioDeviceStart")) then();
    };
  }

  ExitStatus run() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const ExitStatus status = runCommand(options_);
    std::fflush(stdout);
    out_ = testing::internal::GetCapturedStdout();
    err_ = testing::internal::GetCapturedStderr();
    return status;
  }

  static void end() { ::kill(::getpid(), SIGTERM); }

  test::TemporaryFolder folder_;
  test::ScriptedHal hal_;
  RunOptions options_;
  std::string out_;
  std::string err_;
};

TEST_F(RunDevice, SaysWhyItDoesNotStart) {
  hal_.answerNext(test::HalCall::start, -50);
  EXPECT_EQ(run(), ExitStatus::failed);
  EXPECT_EQ(
      err_,
      "tolvanectl: Box: AudioDeviceStart failed (-50).\nIs another app using the device exclusively?\n");
  EXPECT_THAT(out_, testing::Not(HasSubstr("cycles")));
}

TEST_F(RunDevice, SaysThatThereIsNone) {
  hal_.devices.clear();
  EXPECT_EQ(run(), ExitStatus::noSuchDevice);
  EXPECT_EQ(err_, "tolvanectl: there is no audio device\n");
}

TEST_F(RunDevice, CountsCyclesAndOverloads) {
  atStart([this] {
    for (int i = 0; i < 3; ++i) hal_.notify(7, kAudioDeviceProcessorOverload);
    end();
  });
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_EQ(err_, "");
  EXPECT_THAT(out_, HasSubstr("cycles: 0\noverloads: 3\n"
                              "input  output  gain    dB  active\n"
                              "    1       2   0.5  -6.0  yes\n"));
}

TEST_F(RunDevice, SaysThatTheDeviceWentAndCameBack) {
  int asked = 0;
  hal_.onCall = [&](const std::string& call) {
    if (call.starts_with("AudioDeviceStart")) {
      hal_.devices[0].alive = false;
      hal_.notify(7, kAudioDevicePropertyDeviceIsAlive);
    } else if (call.starts_with("AudioObjectGetPropertyData(7, livn") && ++asked == 1) {
      hal_.notify(7, kAudioDevicePropertyDeviceIsAlive);
    } else if (asked == 2) {
      hal_.devices[0].alive = true;
      end();
    }
  };
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_EQ(err_, "tolvanectl: Box: is gone; waiting for it to come back\ntolvanectl: Box: is back\n");
}

TEST_F(RunDevice, LeavesNothingBehindInTheHal) {
  atStart([] { end(); });
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_TRUE(hal_.registrations().empty());
  EXPECT_EQ(hal_.notify(7, kAudioDeviceProcessorOverload), 0U);
  EXPECT_EQ(hal_.notify(7, kAudioDevicePropertyDeviceIsAlive), 0U);
}

}  // namespace
}  // namespace tolvane::ctl
