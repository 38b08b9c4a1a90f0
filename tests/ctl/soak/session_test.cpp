// A soak on the virtual device, with and without a fault in the routing.
#include "ctl/soak/session.h"

#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/virtual/virtual_device_run.h"

namespace tolvane::ctl {
namespace {

using testing::HasSubstr;

int calls = 0;

/// Routes, but changes the last bit of one sample in the cycle 1000.
OSStatus routeWithAFault(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* input,
                         const AudioTimeStamp* inputTime, AudioBufferList* output,
                         const AudioTimeStamp* outputTime, void* context) {
  const OSStatus status = halIOProc(device, now, input, inputTime, output, outputTime, context);
  if (++calls == 1000) {
    auto* const sample = static_cast<float*>(output->mBuffers[3].mData) + 11;
    *sample = std::nextafter(*sample, 1.0F);
  }
  return status;
}

class SoakSessionTest : public test::VirtualDeviceTest {
 protected:
  void rehearse(const TolvaneRehearsal& rehearsal) const {
    const auto where = test::address(kTolvaneDevicePropertyRehearsal);
    ASSERT_EQ(AudioObjectSetPropertyData(device_, &where, 0, nullptr, sizeof rehearsal, &rehearsal), noErr);
  }
  void SetUp() override {
    VirtualDeviceTest::SetUp();
    rehearse({1, 1});
  }
  void TearDown() override {
    rehearse({0, 0});
    VirtualDeviceTest::TearDown();
  }

  SoakOptions options_ = [] {
    SoakOptions options;
    options.fullSpeed = true;
    options.minutes = 1.0;
    options.editsPerMinute = 600'000;
    return options;
  }();
  const AudioDeviceInfo info_{device_, "Virtual", 18, 20};
  const SignalPipe signals_{{SIGTERM}};
};

TEST_F(SoakSessionTest, EverySampleOfAMinuteIsRightAndComesBack) {
  SoakSession session(options_, info_, signals_);
  ASSERT_FALSE(session.run());
  const SoakResult& result = session.result();
  const LoopCheck& loops = session.checker().loops();
  EXPECT_GE(result.counts.frames, 60U * 48000);
  EXPECT_EQ(result.counts.right, result.counts.frames * 20);
  EXPECT_EQ(result.counts.wrong + result.counts.uncheckedCycles + result.counts.gaps, 0U);
  EXPECT_EQ(loops.loops(), 18U);
  EXPECT_GT(loops.right(), 59U * 48000 * 18);
  EXPECT_EQ(loops.wrong() + loops.missing() + loops.breaks(), 0U);
  EXPECT_GT(result.edits, 100'000U);
  EXPECT_GT(result.publications, 100U);
  EXPECT_LE(result.publications, result.counts.cycles + 1);
  EXPECT_EQ(result.failure(loops), "");
  EXPECT_FALSE(result.moments.empty());
}

struct DeviceSize {
  std::uint32_t inputs;
  std::uint32_t outputs;
};

class SoakOfSize : public SoakSessionTest, public testing::WithParamInterface<DeviceSize> {};

TEST_P(SoakOfSize, EverySampleIsRight) {
  const auto [inputs, outputs] = GetParam();
  hal::VirtualDeviceConfig config;
  config.inputStreams = {inputs};
  config.outputStreams = hal::StreamLayout(outputs, 1);
  configure(config);
  options_.minutes = 0.01;
  SoakSession session(options_, {device_, "Virtual", inputs, outputs}, signals_);
  ASSERT_FALSE(session.run());
  const SoakResult& result = session.result();
  EXPECT_EQ(result.failure(session.checker().loops()), "");
  EXPECT_EQ(result.counts.right, result.counts.frames * outputs);
  EXPECT_EQ(session.checker().loops().loops(), std::min({inputs, outputs, 64U}));
  // At full speed the smallest device is done before the main thread may have edited anything.
}

INSTANTIATE_TEST_SUITE_P(Sizes, SoakOfSize,
                         testing::Values(DeviceSize{1, 1}, DeviceSize{1, 1024}, DeviceSize{1024, 1},
                                         DeviceSize{63, 65}, DeviceSize{1024, 1024}),
                         [](const auto& size) {
                           return std::to_string(size.param.inputs) + "x" +
                                  std::to_string(size.param.outputs);
                         });

TEST_F(SoakSessionTest, AFaultInOneSampleIsFound) {
  calls = 0;
  options_.routing = &routeWithAFault;
  SoakSession session(options_, info_, signals_);
  ASSERT_FALSE(session.run());
  EXPECT_EQ(session.result().counts.wrong, 1U);
  EXPECT_EQ(session.result().failure(session.checker().loops()), "1 sample routed wrong");
  EXPECT_THAT(session.result().firstWrong.value_or(""), HasSubstr("cycle 1000, output 4, frame 12: "));
  const std::string page = soakPage(session.result(), session.checker());
  EXPECT_THAT(page, HasSubstr("<p class=\"failed\">Failed: 1 sample routed wrong.</p>"));
  EXPECT_THAT(page, HasSubstr("cycle 1000, output 4, frame 12: "));
}

}  // namespace
}  // namespace tolvane::ctl
