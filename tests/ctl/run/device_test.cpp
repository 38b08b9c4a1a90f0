// tolvanectl run on a scripted HAL's device that refuses, overloads, goes away and comes back.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include "ctl/run/command.h"
#include "ctl/support/files.h"
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

  /// Calls `then` in AudioDeviceStart(), so that it completes before the session's loop begins.
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

TEST_F(RunDevice, SaysWhyItDoesNotStartAlsoWhenItIsToldToEnd) {
  hal_.answerNext(test::HalCall::start, -50);
  atStart([] { end(); });
  EXPECT_EQ(run(), ExitStatus::failed);
  EXPECT_THAT(err_, HasSubstr("AudioDeviceStart failed (-50)"));
}

TEST_F(RunDevice, EndsOnceThoughItIsToldTwice) {
  atStart([] {
    end();
    end();
  });
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_THAT(out_, HasSubstr("cycles: 0\n"));
}

using RunDeviceDeathTest = RunDevice;

TEST_F(RunDeviceDeathTest, ADeviceThatNeverStartsIsLeftByTheSignal) {
  atStart([] {
    end();
    for (;;) ::pause();
  });
  EXPECT_EXIT(static_cast<void>(runCommand(options_)), testing::KilledBySignal(SIGTERM), "");
}

TEST_F(RunDeviceDeathTest, ADeviceThatNeverStopsIsLeftByTheSignal) {
  hal_.onCall = [](const std::string& call) {
    if (call.starts_with("AudioDeviceStart")) end();
    if (!call.starts_with("AudioDeviceStop")) return;
    for (;;) ::pause();
  };
  EXPECT_EXIT(static_cast<void>(runCommand(options_)), testing::KilledBySignal(SIGTERM), "");
}

TEST_F(RunDevice, SaysThatThereIsNone) {
  hal_.devices.clear();
  EXPECT_EQ(run(), ExitStatus::noSuchDevice);
  EXPECT_EQ(err_, "tolvanectl: there is no audio device\n");
}

TEST_F(RunDevice, SaysInOneLineThatNoThreadIsLeft) {
  hal_.answerNext(test::HalCall::start, kTolvaneExhaustedError);
  EXPECT_EQ(run(), ExitStatus::failed);
  EXPECT_EQ(err_, "tolvanectl: Box: no thread, memory or descriptor is left\n");
}

TEST_F(RunDevice, DoesNotRunWhereItCannotBeToldOfOverloads) {
  hal_.answerNext(test::HalCall::addPropertyListener, kTolvaneExhaustedError);
  EXPECT_EQ(run(), ExitStatus::failed);
  EXPECT_EQ(err_, "tolvanectl: Box: no thread, memory or descriptor is left\n");
}

TEST_F(RunDevice, SaysWhyThereIsNoList) {
  hal_.failProperty(test::HalCall::getPropertyDataSize, kAudioObjectSystemObject,
                    kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal, kTolvaneExhaustedError);
  EXPECT_EQ(run(), ExitStatus::failed);
  EXPECT_EQ(err_,
            "tolvanectl: the audio devices cannot be listed: no thread, memory or descriptor is left\n");
}

TEST_F(RunDevice, EndsInTheWaitForADevice) {
  options_.device = "Nobody's";
  options_.waitSeconds = 1000.0;
  hal_.onCall = [](const std::string& call) {
    if (call.starts_with("AudioObjectGetPropertyData(1, dev#")) end();
  };
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_EQ(out_ + err_, "");
}

TEST_F(RunDevice, CountsCyclesAndOverloads) {
  atStart([this] {
    for (int i = 0; i < 3; ++i) hal_.notify(7, kAudioDeviceProcessorOverload);
    end();
  });
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_EQ(err_, "tolvanectl: routing on Box\n");
  EXPECT_THAT(out_, HasSubstr("cycles: 0\noverloads: 3\n"
                              "input  output  gain    dB  active\n"
                              "    1       2   0.5  -6.0  yes\n"));
}

TEST_F(RunDevice, PrintsTheNamesOfTheRoutesChannels) {
  hal_.devices[0].inputs = {{"Kick"}};
  hal_.devices[0].outputs = {{}, {"Right"}};
  hal_.devices[0].uid = "jack:box";
  options_.device = "jack:box";
  atStart([] { end(); });
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_THAT(out_, HasSubstr("input  output  gain    dB  active  input name  output name\n"
                              "    1       2   0.5  -6.0  yes     Kick        Right\n"));
}

TEST_F(RunDevice, NamesThePolicyAndThePriorityOfTheAudioThread) {
  hal_.devices[0].scheduling = {SCHED_FIFO, 60};
  atStart(end);
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_EQ(err_, "tolvanectl: routing on Box\n");
  EXPECT_THAT(out_, HasSubstr("overloads: 0\nscheduling: SCHED_FIFO, priority 60\ninput"));
}

TEST_F(RunDevice, SaysWhetherTheMemoryOfTheAudioThreadIsLocked) {
  hal_.devices[0].scheduling = {SCHED_FIFO, 60};
  hal_.devices[0].memoryLocked = true;
  atStart(end);
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_THAT(out_, HasSubstr("scheduling: SCHED_FIFO, priority 60\nmemory: locked\ninput"));
  hal_.devices[0].memoryLocked = false;
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_THAT(out_, HasSubstr("scheduling: SCHED_FIFO, priority 60\nmemory: not locked\ninput"));
}

TEST_F(RunDevice, SaysOnceThatTheAudioThreadDidNotGetRealtimePriority) {
  hal_.devices[0].scheduling = {SCHED_OTHER, 0};
  options_.seconds = 2.5;  // beyond the wait for a service that may grant real-time priority late
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_EQ(err_,
            "tolvanectl: routing on Box\n"
            "tolvanectl: Box: its audio thread did not get real-time priority (SCHED_OTHER); sound may break "
            "up under load\n");
  EXPECT_THAT(out_, HasSubstr("overloads: 0\nscheduling: SCHED_OTHER\ninput"));
}

TEST_F(RunDevice, SaysSoAtTheEndOfAShortRun) {
  hal_.devices[0].scheduling = {SCHED_OTHER, 0};
  atStart(end);
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_THAT(err_, HasSubstr("did not get real-time priority"));
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
  EXPECT_EQ(err_,
            "tolvanectl: routing on Box\n"
            "tolvanectl: Box: is gone; waiting for it to come back\ntolvanectl: Box: is back\n");
}

TEST_F(RunDevice, SaysOnceWhichLinksSomebodyHasRemoved) {
  int looks = 0;
  const auto remove = [&](std::vector<UInt32> inputs, std::vector<UInt32> outputs) {
    hal_.devices[0].removedInputs = std::move(inputs);
    hal_.devices[0].removedOutputs = std::move(outputs);
    hal_.notify(7, kTolvaneDevicePropertyRemovedLinks, kAudioObjectPropertyScopeOutput);
  };
  hal_.onCall = [&](const std::string& call) {
    if (call.starts_with("AudioDeviceStart")) remove({}, {2});
    if (!call.starts_with("AudioObjectGetPropertyData(7, livn")) return;
    ++looks;
    if (looks <= 2) hal_.notify(7, kAudioDevicePropertyDeviceIsAlive);  // nothing new
    if (looks == 3) remove({0, 1, 2, 6}, {2, 4});
    if (looks == 4) remove({}, {});  // the device has been away
    if (looks == 5) remove({}, {2});
    if (looks == 6) end();
  };
  EXPECT_EQ(run(), ExitStatus::done);
  const std::string tail = " removed until the next start, or until the device has been away\n";
  EXPECT_EQ(err_,
            "tolvanectl: routing on Box\n"
            "tolvanectl: Box: somebody has removed the link of output 3; it stays" +
                tail +
                "tolvanectl: Box: somebody has removed the links of inputs 1-3, 7 and output 5; they stay" +
                tail + "tolvanectl: Box: somebody has removed the link of output 3; it stays" + tail);
}

TEST_F(RunDevice, SetsTheBufferBeforeTheStart) {
  hal_.devices[0].bufferFramesRange = {32.0, 2048.0};
  options_.settings.bufferFrames = 128;
  std::size_t setAt = 0;
  std::size_t startedAt = 0;
  hal_.onCall = [&](const std::string& call) {
    if (call == "AudioObjectSetPropertyData(7, fsiz glob 0, 128)") setAt = hal_.calls().size();
    if (!call.starts_with("AudioDeviceStart")) return;
    startedAt = hal_.calls().size();
    end();
  };
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_EQ(err_, "tolvanectl: routing on Box\n");
  EXPECT_EQ(hal_.devices[0].bufferFrames, 128U);
  EXPECT_GT(setAt, 0U);
  EXPECT_GT(startedAt, setAt);
}

TEST_F(RunDevice, SetsTheRateThenTheBufferThenThePeriods) {
  hal_.devices[0].sampleRates = {{44100.0, 44100.0}, {96000.0, 96000.0}};
  hal_.devices[0].bufferFramesRange = {32.0, 2048.0};
  hal_.devices[0].periods = 3;
  hal_.devices[0].periodsRange = {2.0, 16.0};
  options_.settings = {.sampleRateHz = 96000, .bufferFrames = 128, .periods = 2};
  std::vector<std::string> order;
  hal_.onCall = [&](const std::string& call) {
    if (call.starts_with("AudioObjectSetPropertyData")) order.push_back(call);
    if (call.starts_with("AudioDeviceStart")) end();
  };
  EXPECT_EQ(run(), ExitStatus::done);
  EXPECT_THAT(order, testing::ElementsAre("AudioObjectSetPropertyData(7, nsrt glob 0, 96000)",
                                          "AudioObjectSetPropertyData(7, fsiz glob 0, 128)",
                                          "AudioObjectSetPropertyData(7, tper glob 0, 2)"));
  EXPECT_EQ(err_, "tolvanectl: routing on Box\n");
}

TEST_F(RunDevice, ARateThatTheDeviceHasNeedNotBeSet) {
  options_.settings.sampleRateHz = 48000;
  atStart([] { end(); });
  EXPECT_EQ(run(), ExitStatus::done);
  for (const std::string& call : hal_.calls()) EXPECT_FALSE(call.starts_with("AudioObjectSetPropertyData"));
}

TEST_F(RunDevice, LeavesTheBufferAloneUnasked) {
  atStart([] { end(); });
  EXPECT_EQ(run(), ExitStatus::done);
  for (const std::string& call : hal_.calls()) EXPECT_FALSE(call.starts_with("AudioObjectSetPropertyData"));
}

class RefusedBuffer : public RunDevice {
 protected:
  /// Runs, expects a failure before the device starts, and returns the messages.
  std::string message(std::uint32_t frames) {
    options_.settings.bufferFrames = frames;
    EXPECT_EQ(run(), ExitStatus::failed);
    for (const std::string& call : hal_.calls()) EXPECT_FALSE(call.starts_with("AudioDeviceStart"));
    return err_;
  }
};

TEST_F(RefusedBuffer, OutOfTheRange) {
  hal_.devices[0].bufferFramesRange = {32.0, 2048.0};
  EXPECT_EQ(message(31), "tolvanectl: Box: a buffer of 31 frames is out of its range, 32 to 2048 frames\n");
  EXPECT_EQ(message(2049),
            "tolvanectl: Box: a buffer of 2049 frames is out of its range, 32 to 2048 frames\n");
}

TEST_F(RefusedBuffer, OfADeviceThatHasOneSizeAlone) {
  EXPECT_EQ(message(256), "tolvanectl: Box: its buffer size cannot be set, and is 512 frames\n");
}

TEST_F(RefusedBuffer, OfADeviceThatDoesNotSayWhatItTakes) {
  hal_.failProperty(test::HalCall::getPropertyData, 7, kAudioDevicePropertyBufferFrameSizeRange,
                    kAudioObjectPropertyScopeGlobal, kAudioHardwareUnknownPropertyError);
  EXPECT_EQ(message(256), "tolvanectl: Box: its buffer size cannot be set\n");
}

TEST_F(RefusedBuffer, ByTheDevice) {
  hal_.devices[0].bufferFramesRange = {32.0, 2048.0};
  hal_.answerNext(test::HalCall::setPropertyData, -50);
  EXPECT_EQ(message(256), "tolvanectl: Box: a buffer of 256 frames is refused (-50)\n");
}

TEST_F(RefusedBuffer, ThatTheDeviceMakesAnother) {
  hal_.devices[0].bufferFramesRange = {32.0, 2048.0};
  hal_.onCall = [this](const std::string& call) {
    if (call.starts_with("AudioObjectGetPropertyData(7, fsiz")) hal_.devices[0].bufferFrames = 240;
  };
  EXPECT_EQ(message(256), "tolvanectl: Box: takes a buffer of 240 frames instead of 256\n");
}

class RefusedRate : public RunDevice {
 protected:
  std::string message(std::uint32_t rateHz) {
    options_.settings.sampleRateHz = rateHz;
    EXPECT_EQ(run(), ExitStatus::failed);
    for (const std::string& call : hal_.calls()) EXPECT_FALSE(call.starts_with("AudioDeviceStart"));
    return err_;
  }
};

TEST_F(RefusedRate, OfADeviceWhoseRateIsFixed) {
  EXPECT_EQ(message(44100), "tolvanectl: Box: its sample rate cannot be set, and is 48000 Hz\n");
}

TEST_F(RefusedRate, OfADeviceThatDoesNotSayWhatItTakes) {
  hal_.failProperty(test::HalCall::getPropertyDataSize, 7, kAudioDevicePropertyAvailableNominalSampleRates,
                    kAudioObjectPropertyScopeGlobal, kAudioHardwareUnknownPropertyError);
  EXPECT_EQ(message(44100), "tolvanectl: Box: its sample rate cannot be set, and is 48000 Hz\n");
}

TEST_F(RefusedRate, ThatIsNoneOfTheDevices) {
  hal_.devices[0].sampleRates = {{44100.0, 44100.0}, {48000.0, 96000.0}};
  EXPECT_EQ(message(192000),
            "tolvanectl: Box: a sample rate of 192000 Hz is none of its own, 44100, 48000 to 96000 Hz\n");
}

TEST_F(RefusedRate, ByTheDevice) {
  hal_.devices[0].sampleRates = {{44100.0, 44100.0}, {48000.0, 48000.0}};
  hal_.answerNext(test::HalCall::setPropertyData, -50);
  EXPECT_EQ(message(44100), "tolvanectl: Box: a sample rate of 44100 Hz is refused (-50)\n");
}

TEST_F(RefusedRate, ThatTheDeviceMakesAnother) {
  hal_.devices[0].sampleRates = {{44100.0, 44100.0}, {48000.0, 48000.0}};
  hal_.onCall = [this](const std::string& call) {
    if (call.starts_with("AudioObjectGetPropertyData(7, nsrt")) hal_.devices[0].sampleRate = 48000.0;
  };
  EXPECT_EQ(message(44100), "tolvanectl: Box: takes a sample rate of 48000 Hz instead of 44100\n");
}

class RefusedPeriods : public RunDevice {
 protected:
  std::string message(std::uint32_t periods) {
    options_.settings.periods = periods;
    EXPECT_EQ(run(), ExitStatus::failed);
    return err_;
  }
};

TEST_F(RefusedPeriods, OfADeviceThatDoesNotKnowItsHardware) {
  EXPECT_EQ(message(4), "tolvanectl: Box: its number of periods cannot be set\n");
}

TEST_F(RefusedPeriods, OutOfTheRange) {
  hal_.devices[0].periods = 3;
  hal_.devices[0].periodsRange = {2.0, 16.0};
  EXPECT_EQ(message(32), "tolvanectl: Box: a ring of 32 periods is out of its range, 2 to 16 periods\n");
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
