// Levels of all channels: exact, none lost, clips held, and the callback's share of a cycle.
#include "ctl/control/level_bank.h"

#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

#include <gtest/gtest.h>

#include "ctl/control/meter_teller.h"
#include "support/buffer_list.h"

namespace tolvane::ctl::control {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr std::size_t kFrames = 48;  // a millisecond at 48 kHz

class LevelBankTest : public testing::Test {
 protected:
  LevelBankTest() {
    input_.add(2, kFrames);
    input_.add(1, kFrames);
    output_.add(1, kFrames);
  }

  float* input(std::size_t buffer) { return static_cast<float*>(input_.buffer(buffer).mData); }
  float* output() { return static_cast<float*>(output_.buffer(0).mData); }
  void cycle(nanoseconds time = {}) { bank_.observe(input_.get(), output_.get(), time); }
  /// The levels of the cycles since the last call.
  Meters levels() {
    bank_.ask();
    cycle();
    auto meters = bank_.take();
    EXPECT_TRUE(meters);
    return meters.value_or(Meters{});
  }

  test::BufferList input_;
  test::BufferList output_;
  LevelBank bank_{3, 1, 48000.0};
};

TEST_F(LevelBankTest, MeasuresPeakAndRmsOfEachChannel) {
  for (std::size_t f = 0; f < kFrames; ++f) {
    input(0)[2 * f] = f % 2 == 0 ? 0.5F : -0.5F;
    input(0)[2 * f + 1] = f == 7 ? -0.75F : 0.0F;
    output()[f] = static_cast<float>(std::sin(2.0 * M_PI * static_cast<double>(f) / kFrames));
  }
  cycle();
  const Meters meters = levels();
  EXPECT_EQ(meters.inputs[0], (Level{0.5F, 0.5F, false}));
  EXPECT_EQ(meters.inputs[1].peak, 0.75F);
  EXPECT_FLOAT_EQ(meters.inputs[1].rms, 0.75F / std::sqrt(48.0F));
  EXPECT_EQ(meters.inputs[2], (Level{0.0F, 0.0F, false}));
  EXPECT_FLOAT_EQ(meters.outputs[0].rms, std::sqrt(0.5F));
  EXPECT_TRUE(meters.outputs[0].isClipped) << "full scale";
}

TEST_F(LevelBankTest, ALevelIsToldOnceAndTheQuietAfterIt) {
  output()[3] = 0.9F;
  cycle();
  output()[3] = 0.0F;
  cycle();
  EXPECT_EQ(levels().outputs[0].peak, 0.9F);
  EXPECT_EQ(levels().outputs[0].peak, 0.0F);
  EXPECT_EQ(bank_.take(), std::nullopt);
}

TEST_F(LevelBankTest, WithoutACycleThereIsNoAnswer) {
  bank_.ask();
  EXPECT_EQ(bank_.take(), std::nullopt);
  bank_.ask();
  cycle();
  EXPECT_TRUE(bank_.take());
}

TEST_F(LevelBankTest, AnAnswerThatIsTakenLateIsNotLost) {
  output()[3] = 1.0F;
  cycle();
  output()[3] = 0.0F;
  bank_.ask();
  cycle();  // answers
  bank_.ask();
  cycle();
  const auto meters = bank_.take();
  ASSERT_TRUE(meters);
  EXPECT_EQ(meters->outputs[0].peak, 1.0F);
}

TEST_F(LevelBankTest, WhatIsNoFiniteNumberIsTheLargestOneAndClips) {
  input(1)[0] = std::numeric_limits<float>::quiet_NaN();
  output()[0] = -std::numeric_limits<float>::infinity();
  cycle();
  const Meters meters = levels();
  constexpr float kLargest = std::numeric_limits<float>::max();
  EXPECT_EQ(meters.inputs[2], (Level{kLargest, kLargest, true}));
  EXPECT_EQ(meters.outputs[0], (Level{kLargest, kLargest, true}));
}

TEST_F(LevelBankTest, ChannelsWithoutDataAndMissingListsAreSilent) {
  input_.buffer(0).mData = nullptr;
  input(1)[0] = 0.5F;
  cycle();
  bank_.observe(nullptr, nullptr, {});
  const Meters meters = levels();
  EXPECT_EQ(meters.inputs[0].peak, 0.0F);
  EXPECT_EQ(meters.inputs[2].peak, 0.5F);
}

TEST_F(LevelBankTest, TheLoadIsTheCallbacksShareOfTheCycle) {
  cycle(nanoseconds(250'000));
  cycle(nanoseconds(500'000));
  LoadReading load = bank_.load();
  EXPECT_DOUBLE_EQ(load.mean, 0.375);
  EXPECT_DOUBLE_EQ(load.peak, 0.5);
  EXPECT_EQ(load.overloads, 0U);
  cycle(milliseconds(3));
  load = bank_.load();
  EXPECT_DOUBLE_EQ(load.mean, 1.25);
  EXPECT_DOUBLE_EQ(load.peak, 3.0);
  EXPECT_EQ(load.overloads, 1U);
}

TEST_F(LevelBankTest, TheLoadIsKnownIfTheFirstOutputHasNoData) {
  output_.buffer(0).mData = nullptr;
  output_.buffer(0).mDataByteSize = 0;
  cycle(nanoseconds(250'000));
  bank_.observe(input_.get(), nullptr, nanoseconds(250'000));
  const LoadReading load = bank_.load();
  EXPECT_DOUBLE_EQ(load.mean, 0.25);
  EXPECT_DOUBLE_EQ(load.peak, 0.25);
  EXPECT_EQ(load.overloads, 0U);
}

TEST_F(LevelBankTest, WhoeverAsksForTheLoadTakesItFromNobodyElse) {
  const auto second = [this](nanoseconds time) {
    for (int c = 0; c < 1000; ++c) cycle(time);
  };
  cycle(milliseconds(2));
  second(nanoseconds(250'000));
  EXPECT_NEAR(bank_.load().mean, 0.25, 0.01);
  for (int asker = 0; asker < 3; ++asker) {
    const LoadReading load = bank_.load();
    EXPECT_NEAR(load.mean, 0.25, 0.01) << "also right after somebody else";
    EXPECT_EQ(load.peak, 2.0);
  }
  cycle(milliseconds(4));
  EXPECT_EQ(bank_.load().peak, 4.0) << "at once";
  second(nanoseconds(500'000));
  EXPECT_NEAR(bank_.load().mean, 0.5, 0.01);
  EXPECT_EQ(bank_.load().peak, 4.0);
  second(nanoseconds(500'000));
  EXPECT_EQ(bank_.load().peak, 0.5) << "a peak passes";
  EXPECT_EQ(bank_.load().overloads, 2U) << "but is counted for good";
}

// A reading is whole, whatever the two threads do: the IO thread never writes where the other one reads.
TEST_F(LevelBankTest, AReadingIsNeverTorn) {
  for (std::size_t f = 0; f < kFrames; ++f) output()[f] = 0.5F;
  std::atomic<bool> done = false;
  std::thread io([&] {
    while (!done) cycle();
  });
  for (int readings = 0; readings < 2000;) {
    bank_.ask();
    const auto meters = bank_.take();
    if (!meters) continue;
    // The first one may be asked for before the first cycle.
    if (readings++ == 0) continue;
    EXPECT_EQ(meters->outputs[0], (Level{0.5F, 0.5F, false}));
  }
  done = true;
  io.join();
}

TEST_F(LevelBankTest, AreReadTwentyTimesASecondAndClipsAreHeld) {
  MeterTeller teller(&bank_);
  MeterTeller::Time now{};
  const auto run = [&](int ms) {
    std::vector<Meters> told;
    for (int t = 0; t < ms; ++t, now += milliseconds(1)) {
      if (auto meters = teller.read(now, true)) told.push_back(*meters);
      cycle();
    }
    return told;
  };
  output()[0] = 1.0F;
  cycle();
  output()[0] = 0.0F;
  EXPECT_EQ(teller.read(now, false), std::nullopt) << "nobody wants them";
  const auto told = run(1000);
  EXPECT_GE(told.size(), 18U);
  EXPECT_LE(told.size(), 20U);
  EXPECT_TRUE(told.front().outputs[0].isClipped) << "also what clipped while nobody listened";
  EXPECT_EQ(told.front().outputs[0].peak, 0.0F);
  EXPECT_TRUE(told.back().outputs[0].isClipped);
  teller.resetClips();
  EXPECT_FALSE(run(200).back().outputs[0].isClipped);
}

TEST_F(LevelBankTest, NoClipIsLostIfTheProgramStandsStill) {
  MeterTeller teller(&bank_);
  MeterTeller::Time now{};
  for (int t = 0; t < 200; ++t, now += milliseconds(1)) {
    static_cast<void>(teller.read(now, true));
    cycle();
  }
  now += milliseconds(100);
  static_cast<void>(teller.read(now, true));  // asks
  output()[0] = 1.0F;
  cycle();  // answers what was before, then hears the clip
  output()[0] = 0.0F;
  static_cast<void>(teller.read(now, true));
  now += milliseconds(50);
  static_cast<void>(teller.read(now, true));  // asks
  cycle();                                    // answers
  now += milliseconds(300);                   // stands still
  std::vector<Meters> told;
  for (int t = 0; t < 200; ++t, now += milliseconds(1)) {
    if (auto meters = teller.read(now, true)) told.push_back(*meters);
    cycle();
  }
  ASSERT_FALSE(told.empty());
  EXPECT_EQ(told.front().outputs[0].peak, 1.0F);
  EXPECT_TRUE(told.back().outputs[0].isClipped);
}

TEST_F(LevelBankTest, LevelsOfATimeInWhichNobodyListenedAreNotTold) {
  MeterTeller teller(&bank_);
  MeterTeller::Time now{};
  const auto run = [&](int ms) {
    float highest = 0.0F;
    for (int t = 0; t < ms; ++t, now += milliseconds(1)) {
      if (const auto meters = teller.read(now, true)) highest = std::max(highest, meters->outputs[0].peak);
      cycle();
    }
    return highest;
  };
  run(200);
  // In whatever state the question is when they stop listening.
  for (const int ms : {1, 10, 49, 50, 51, 99}) {
    run(ms);
    EXPECT_EQ(teller.read(now, false), std::nullopt);
    output()[0] = 0.9F;
    cycle();
    output()[0] = 0.0F;
    now += std::chrono::hours(1);
    EXPECT_EQ(run(200), 0.0F) << ms;
  }
}

TEST_F(LevelBankTest, AResetAlsoHoldsWhileNobodyListens) {
  MeterTeller teller(&bank_);
  MeterTeller::Time now{};
  const auto isClipped = [&] {
    bool isLit = false;
    for (int t = 0; t < 200; ++t, now += milliseconds(1)) {
      if (const auto meters = teller.read(now, true)) isLit = meters->outputs[0].isClipped;
      cycle();
    }
    return isLit;
  };
  const auto clip = [this] {
    output()[0] = 1.0F;
    cycle();
    output()[0] = 0.0F;
    cycle();
  };
  clip();
  teller.resetClips();
  cycle();
  EXPECT_FALSE(isClipped()) << "it was before the reset";
  static_cast<void>(teller.read(now, false));
  clip();
  teller.resetClips();
  cycle();
  clip();
  EXPECT_TRUE(isClipped()) << "it was after the reset";
}

TEST_F(LevelBankTest, AClipBeforeTheResetIsNotToldAfterIt) {
  MeterTeller teller(&bank_);
  MeterTeller::Time now{};
  const auto clips = [&](int ms) {
    int told = 0;
    for (int t = 0; t < ms; ++t, now += milliseconds(1)) {
      if (const auto meters = teller.read(now, true)) told += meters->outputs[0].isClipped ? 1 : 0;
      cycle();
    }
    return told;
  };
  // In whatever state the question is at the clip, and at the reset.
  for (const int msBefore : {0, 1, 10, 48, 49, 50, 51, 99}) {
    for (const int msBetween : {0, 1, 2, 30, 49, 50, 51}) {
      clips(msBefore);
      output()[0] = 1.0F;
      cycle();
      output()[0] = 0.0F;
      clips(msBetween);
      teller.resetClips();
      EXPECT_EQ(clips(200), 0) << msBefore << ' ' << msBetween;
    }
  }
  output()[0] = 1.0F;
  cycle();
  output()[0] = 0.0F;
  EXPECT_GT(clips(200), 0);
}

}  // namespace
}  // namespace tolvane::ctl::control
