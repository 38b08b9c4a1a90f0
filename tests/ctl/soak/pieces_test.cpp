// The parts of a soak: its signal, its histogram, its comparisons, its pictures.
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/routing/io_proc.h"
#include "core/routing/routing_context.h"
#include "ctl/soak/checker.h"
#include "ctl/soak/process_state.h"
#include "ctl/soak/random_edits.h"
#include "ctl/soak/signal.h"
#include "ctl/soak/svg_chart.h"
#include "support/buffer_list.h"

namespace tolvane::ctl {
namespace {

using testing::HasSubstr;

TEST(SoakSignal, EverySampleNamesItsChannelAndItsFrame) {
  for (std::uint64_t channel = 0; channel < kSignalChannels; channel += channel < 3 ? 1 : 60) {
    for (std::uint64_t frame = 0; frame < kSignalFrames; frame += 13) {
      const float sample = signalSample(channel, frame + 5 * kSignalFrames);
      ASSERT_GT(sample, 0.0F);
      ASSERT_LE(sample, 0x1p-8F);
      ASSERT_EQ(signalName(sample), (SignalName{channel, frame}));
    }
  }
  EXPECT_EQ(signalName(signalSample(1023, 16383)), (SignalName{1023, 16383}));
}

TEST(SoakSignal, OtherSamplesHaveNoName) {
  for (const float sample : {0.0F, -0.0F, 1.0F, -signalSample(3, 4), signalSample(3, 4) * 0.3F, 0x1p-33F,
                             std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
    EXPECT_EQ(signalName(sample), std::nullopt) << sample;
}

TEST(SoakHistogram, CountsEachDurationInItsClass) {
  Histogram histogram;
  EXPECT_TRUE(histogram.classes().empty());
  EXPECT_EQ(histogram.percentileNs(0.5), 0U);
  for (const std::uint64_t ns : {0U, 1U, 3U, 4U, 7U, 8U, 9U, 1000U, 1023U, 1'000'000'000U}) {
    Histogram one;
    one.add(ns);
    histogram.add(ns);
    const auto classes = one.classes();
    ASSERT_EQ(classes.size(), 1U) << ns;
    EXPECT_LE(classes[0].fromNs, ns);
    EXPECT_GT(classes[0].toNs, ns);
    EXPECT_EQ(classes[0].count, 1U);
  }
  EXPECT_EQ(histogram.maxNs(), 1'000'000'000U);
  const auto all = histogram.classes();
  EXPECT_EQ(std::accumulate(all.begin(), all.end(), std::uint64_t{0},
                            [](std::uint64_t sum, const auto& each) { return sum + each.count; }),
            10U);
  for (std::size_t i = 1; i < all.size(); ++i) EXPECT_EQ(all[i].fromNs, all[i - 1].toNs);
  EXPECT_GE(histogram.percentileNs(0.5), 7U);
  EXPECT_LE(histogram.percentileNs(0.5), 10U);
}

/// A device of one-channel streams whose output n comes back as input n, some cycles later.
class LoopTest : public testing::Test {
 protected:
  static constexpr std::size_t kFrames = 32;
  static constexpr std::size_t kChannels = 3;

  LoopTest() : sent_(kChannels), inputs_(kChannels, std::vector<float>(kFrames)), outputs_(inputs_) {
    check_.search(true);
  }

  /// One cycle. `change` may change what comes back.
  void cycle(const std::function<void()>& change = [] {}) {
    for (std::size_t c = 0; c < kChannels; ++c) {
      for (std::size_t f = 0; f < kFrames; ++f) {
        const std::uint64_t at = frame_ + f;
        inputs_[c][f] = at >= delay_ && at - delay_ < sent_[c].size() ? sent_[c][at - delay_] : 0.0F;
        outputs_[c][f] = signalSample(c, at);
      }
    }
    change();
    for (std::size_t c = 0; c < kChannels; ++c)
      sent_[c].insert(sent_[c].end(), outputs_[c].begin(), outputs_[c].end());
    const auto views = [](std::vector<std::vector<float>>& channels) {
      std::vector<ChannelSamples> result;
      for (auto& channel : channels) result.push_back({channel.data(), 1, channel.size()});
      return result;
    };
    check_.cycle(frame_, kFrames, views(inputs_), views(outputs_));
    frame_ += kFrames;
  }
  void cycles(int count) {
    for (int i = 0; i < count; ++i) cycle();
  }

  LoopCheck check_{kChannels, kChannels};
  std::vector<std::vector<float>> sent_;
  std::vector<std::vector<float>> inputs_;
  std::vector<std::vector<float>> outputs_;
  std::uint64_t frame_ = 0;
  std::uint64_t delay_ = 70;  // not a whole number of cycles
};

TEST_F(LoopTest, IsFoundAndEverySampleIsRight) {
  cycles(1000);
  EXPECT_EQ(check_.loops(), kChannels);
  EXPECT_EQ(check_.delayFrames(), 70U);
  EXPECT_GT(check_.right(), 900U * kFrames * kChannels);
  EXPECT_EQ(check_.wrong() + check_.missing() + check_.breaks(), 0U);
}

TEST_F(LoopTest, OneChangedSampleIsWrong) {
  cycles(100);
  cycle([this] { inputs_[1][7] += 0.001F; });
  cycles(10);
  EXPECT_EQ(check_.wrong(), 1U);
  EXPECT_EQ(check_.missing() + check_.breaks(), 0U);
}

TEST_F(LoopTest, OneSilentSampleIsMissing) {
  cycles(100);
  cycle([this] { inputs_[2][0] = 0.0F; });
  cycles(10);
  EXPECT_EQ(check_.missing(), 1U);
  EXPECT_EQ(check_.wrong() + check_.breaks(), 0U);
}

TEST_F(LoopTest, AnotherDelayIsABreakWithItsFramesMissing) {
  cycles(100);
  delay_ += 64;
  cycles(100);
  EXPECT_EQ(check_.breaks(), kChannels);
  EXPECT_EQ(check_.missing(), 64U * kChannels);
  EXPECT_EQ(check_.wrong(), 0U);
}

TEST_F(LoopTest, AnInputThatCarriesSomethingElseIsNoLoop) {
  for (int i = 0; i < 100; ++i) cycle([this] { inputs_[0][3] = 0.5F; });
  EXPECT_EQ(check_.loops(), kChannels - 1);
}

TEST_F(LoopTest, IsNotLookedForLater) {
  check_.search(false);
  cycles(100);
  EXPECT_EQ(check_.loops(), 0U);
}

/// Counts calls and changes one sample in one of them.
int faultyCalls = 0;
int faultyCall = -1;
OSStatus faulty(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* input,
                const AudioTimeStamp* inputTime, AudioBufferList* output, const AudioTimeStamp* outputTime,
                void* context) {
  static_cast<void>(device), static_cast<void>(now), static_cast<void>(inputTime),
      static_cast<void>(outputTime);
  routeUntraced(input, output, context);
  if (faultyCalls++ == faultyCall) {
    auto* const sample = static_cast<float*>(output->mBuffers[1].mData) + 5;
    *sample = std::nextafter(*sample, 1.0F);
  }
  return noErr;
}

class CheckerTest : public testing::Test {
 protected:
  CheckerTest() {
    input_.add(2, 64, 0.25F).add(1, 64, 0.25F);
    output_.add(1, 64).add(1, 64).add(2, 64);
    faultyCalls = 0;
    faultyCall = -1;
  }

  void publish(const Routes& routes) {
    checker_.tables().announce(routes);
    writeConnections(&context_, routes);
    checker_.tables().confirm();
  }
  void cycle() {
    const AudioTimeStamp now{};
    checker_.cycle(1, &now, input_.get(), &now, output_.get(), &now, &context_);
  }

  IOProcContext context_ = initialContext(3, 4);
  test::BufferList input_;
  test::BufferList output_;
  SoakChecker checker_{3, 4, 48000.0, &faulty};
};

TEST_F(CheckerTest, EverySampleOfEveryEditIsRight) {
  RandomEdits edits(3, 4);
  for (int i = 0; i < 2000; ++i) {
    publish(edits.next());
    cycle();
  }
  const SoakCounts counts = checker_.counts();
  EXPECT_EQ(counts.cycles, 2000U);
  EXPECT_EQ(counts.frames, 2000U * 64);
  EXPECT_EQ(counts.right, 2000U * 64 * 4);
  EXPECT_EQ(counts.wrong + counts.uncheckedCycles, 0U);
  EXPECT_EQ(checker_.firstWrong(), std::nullopt);
}

TEST_F(CheckerTest, OneSampleThatDiffersByItsLastBitIsFound) {
  publish(straightRoutes(3, 4));
  faultyCall = 17;
  for (int i = 0; i < 50; ++i) cycle();
  EXPECT_EQ(checker_.counts().wrong, 1U);
  EXPECT_EQ(checker_.counts().right, 50U * 64 * 4 - 1);
  EXPECT_THAT(checker_.firstWrong().value_or(""), HasSubstr("cycle 18, output 2, frame 6: "));
}

TEST_F(CheckerTest, ATableThatWasNotPublishedIsWrong) {
  publish({{0, 0, 1.0F, true}});
  cycle();
  writeConnections(&context_, std::vector<PatchConnection>{{0, 1, 1.0F, true}});
  cycle();
  EXPECT_EQ(checker_.counts().wrong, 128U) << "one output silent, another not";
}

TEST_F(CheckerTest, ATableThatIsBeingPublishedIsRightBeforeAndAfter) {
  const Routes one = {{0, 0, 1.0F, true}};
  const Routes other = {{1, 1, 0.5F, true}};
  publish(one);
  cycle();
  checker_.tables().announce(other);
  cycle();
  writeConnections(&context_, other);
  cycle();
  checker_.tables().confirm();
  cycle();
  EXPECT_EQ(checker_.counts().wrong, 0U);
  writeConnections(&context_, one);
  cycle();
  EXPECT_NE(checker_.counts().wrong, 0U) << "no longer";
}

TEST_F(CheckerTest, ACycleThatIsTooLongIsSaidToBeUnchecked) {
  test::BufferList longInput;
  test::BufferList longOutput;
  longInput.add(3, SoakChecker::kMostFrames + 1);
  longOutput.add(4, SoakChecker::kMostFrames + 1).add(1, SoakChecker::kMostFrames + 1);
  const AudioTimeStamp now{};
  checker_.cycle(1, &now, longInput.get(), &now, longOutput.get(), &now, &context_);
  EXPECT_EQ(checker_.counts().uncheckedCycles, 1U);
}

TEST_F(CheckerTest, AJumpOfTheDevicesFramesIsAGap) {
  for (const double sampleTime : {0.0, 64.0, 128.0, 256.0, 320.0}) {
    AudioTimeStamp now{};
    now.mSampleTime = sampleTime;
    checker_.cycle(1, &now, input_.get(), &now, output_.get(), &now, &context_);
  }
  EXPECT_EQ(checker_.counts().gaps, 1U);
  EXPECT_EQ(checker_.counts().gapFrames, 64U);
}

TEST(SoakEdits, AreAlwaysTheSameAndStayWithinReason) {
  RandomEdits one(8, 8);
  RandomEdits other(8, 8);
  std::size_t most = 0;
  bool anyInactive = false;
  for (int i = 0; i < 20'000; ++i) {
    const Routes& routes = one.next();
    ASSERT_EQ(routes, other.next());
    most = std::max(most, routes.size());
    for (const PatchConnection& route : routes) {
      ASSERT_TRUE(route.gain >= 0.0F && route.gain <= 1.0F);
      anyInactive = anyInactive || !route.active;
    }
  }
  EXPECT_GT(most, 20U);
  EXPECT_LE(most, 73U);
  EXPECT_TRUE(anyInactive);
}

TEST(SoakPictures, AreOneElementEachAndEscapeNames) {
  const std::string line = lineChart("<Memory>", "KiB", {{0.0, 0.0}, {1.0, 10.0}, {2.0, 5.0}});
  EXPECT_THAT(line, testing::StartsWith("<svg "));
  EXPECT_THAT(line, testing::EndsWith("</svg>\n"));
  EXPECT_THAT(line, HasSubstr("&lt;Memory&gt;"));
  EXPECT_THAT(line, HasSubstr("points=\"70,174 350,28 630,101\""));
  Histogram histogram;
  EXPECT_THAT(histogramChart("Time", histogram, 0), HasSubstr("nothing was measured"));
  histogram.add(1000);
  histogram.add(1000);
  const std::string bars = histogramChart("Time", histogram, 5'000'000);
  EXPECT_THAT(bars, HasSubstr("<title>896 ns to 1 µs: 2</title>"));
  EXPECT_THAT(bars, HasSubstr("a cycle: 5 ms"));
}

TEST(SoakProcessState, IsOfThisProcess) {
  const auto state = processState();
  ASSERT_TRUE(state);
  EXPECT_GT(state->memoryKiB, 1000U);
  EXPECT_GE(state->descriptors, 3U);
  EXPECT_GE(state->threads, 1U);
}

}  // namespace
}  // namespace tolvane::ctl
