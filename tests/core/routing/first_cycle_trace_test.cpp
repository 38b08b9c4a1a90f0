// The trace of a process's first cycle; no later cycle writes any. Every case runs in a child process, so the
// test's own process never runs a cycle.
#include <cinttypes>
#include <csignal>
#include <cstdio>

#include "routing_fixture.h"
#include "support/captured_output.h"
#include "support/child_process.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

constexpr auto kContextLine = R"(\[IOProc\] first call clientData=0x[0-9a-f]{16})";

class FirstCycleTraceTest : public RoutingTest {
 protected:
  FirstCycleTraceTest() {
    input_.add(2, 4, 1.0F).add(8, 4, 1.0F);
    output_.add(2, 4, kStale);
    publish({{0, 0, 1.0F, true}, {1, 1, 0.5F, true}, {9, 9, 1.0F, true}});
  }

  std::vector<std::string> linesOfCycles(int count = 1) { return linesWith(&context_, count); }
  std::vector<std::string> linesWith(IOProcContext* context, int count = 1) {
    const ChildResult child = runInChild([this, context, count] {
      for (int i = 0; i < count; ++i) routeCycle(input_.get(), output_.get(), context);
    });
    EXPECT_EQ(child.exitStatus, 0);
    return linesOf(child.standardOutput);
  }
};

TEST_F(FirstCycleTraceTest, OfANormalCycle) {
  EXPECT_THAT(linesOfCycles(), ElementsAre(MatchesRegex(kContextLine),                     //
                                           "[IOProc] maxIn=8 maxOut=8",                    //
                                           "[IOProc] flattening input ABL...",             //
                                           "[IOProc] inCh=10 — flattening output ABL...",  //
                                           "[IOProc] outCh=2",                             //
                                           "[IOProc] frameCount=4",                        //
                                           "[IOProc] patchCount=3 routing...",             //
                                           "[IOProc] first call completed OK ✓"));
}

TEST_F(FirstCycleTraceTest, NamesTheContextsAddress) {
  std::array<char, 64> expected{};
  std::snprintf(expected.data(), expected.size(), "[IOProc] first call clientData=0x%016" PRIxPTR,
                reinterpret_cast<std::uintptr_t>(&context_));
  EXPECT_EQ(linesOfCycles().at(0), expected.data());
}

TEST_F(FirstCycleTraceTest, ComesOnceHoweverManyCyclesRun) {
  EXPECT_EQ(linesOfCycles(1000).size(), 8U);
}

TEST_F(FirstCycleTraceTest, ComesNotAgainWithAnotherContext) {
  const ChildResult child = runInChild([this] {
    routeCycle(input_.get(), output_.get(), &context_);
    std::puts("another start");
    IOProcContext another = initialContext(2, 2);
    routeCycle(input_.get(), output_.get(), &another);
  });
  const std::vector<std::string> lines = linesOf(child.standardOutput);
  ASSERT_EQ(lines.size(), 9U);
  EXPECT_EQ(lines.back(), "another start");
}

TEST_F(FirstCycleTraceTest, IsStillToComeAfterAudioThatIsNoDevices) {
  routeUntraced(input_.get(), output_.get(), nullptr);
  EXPECT_EQ(output_.channel(0, 0), std::vector<float>(4, kStale));
  routeUntraced(input_.get(), output_.get(), &context_);
  EXPECT_EQ(output_.channel(0, 0), std::vector<float>(4, 1.0F));
  EXPECT_EQ(output_.channel(0, 1), std::vector<float>(4, 0.5F));
  const ChildResult untraced = runInChild([this] {
    for (int i = 0; i < 3; ++i) routeUntraced(input_.get(), output_.get(), &context_);
  });
  EXPECT_EQ(untraced.standardOutput, "");
  EXPECT_EQ(linesOfCycles().size(), 8U);
}

TEST_F(FirstCycleTraceTest, WithoutClientDataHasOneLine) {
  EXPECT_THAT(linesWith(nullptr), ElementsAre("[IOProc] first call clientData=nil"));
}

TEST_F(FirstCycleTraceTest, WhatAnEarlyReturnCutShortNeverComesLater) {
  const ChildResult child = runInChild([this] {
    routeCycle(input_.get(), output_.get(), nullptr);
    routeCycle(input_.get(), output_.get(), &context_);
  });
  EXPECT_EQ(child.standardOutput, "[IOProc] first call clientData=nil\n");
}

TEST_F(FirstCycleTraceTest, WithoutChannelsHasTwoLines) {
  context_.inputChannelCount = 0;
  EXPECT_THAT(linesOfCycles(), ElementsAre(MatchesRegex(kContextLine), "[IOProc] maxIn=0 maxOut=8"));
  context_.inputChannelCount = 8;
  context_.outputChannelCount = -1;
  EXPECT_THAT(linesOfCycles(), ElementsAre(MatchesRegex(kContextLine), "[IOProc] maxIn=8 maxOut=-1"));
}

TEST_F(FirstCycleTraceTest, WithoutAFirstOutputBufferHasFiveLines) {
  output_ = BufferList();
  EXPECT_THAT(
      linesOfCycles(),
      ElementsAre(MatchesRegex(kContextLine), "[IOProc] maxIn=8 maxOut=8", "[IOProc] flattening input ABL...",
                  "[IOProc] inCh=10 — flattening output ABL...", "[IOProc] outCh=0"));
}

TEST_F(FirstCycleTraceTest, WithAFirstOutputBufferOfNoChannelsHasFiveLines) {
  output_ = BufferList();
  output_.addStream(0, 4).add(3, 4);
  const std::vector<std::string> lines = linesOfCycles();
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[4], "[IOProc] outCh=3");
}

TEST_F(FirstCycleTraceTest, WithAFirstOutputBufferOfNoBytesHasFiveLines) {
  output_.buffer(0).mDataByteSize = 0;
  const std::vector<std::string> lines = linesOfCycles();
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[4], "[IOProc] outCh=2");
}

TEST_F(FirstCycleTraceTest, WithFewerBytesThanAFrameHasSixLines) {
  output_.buffer(0).mDataByteSize = 7;
  const std::vector<std::string> lines = linesOfCycles();
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_EQ(lines[5], "[IOProc] frameCount=0");
}

TEST_F(FirstCycleTraceTest, WithNoRouteIsComplete) {
  publish({});
  const std::vector<std::string> lines = linesOfCycles();
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_EQ(lines[6], "[IOProc] patchCount=0 routing...");
  EXPECT_EQ(lines[7], "[IOProc] first call completed OK ✓");
}

TEST_F(FirstCycleTraceTest, WithANegativeCountEndsInTheFatalError) {
  context_.countB = -5;
  const ChildResult child = runInChild([this] { routeCycle(input_.get(), output_.get(), &context_); });
  EXPECT_EQ(child.signalNumber, SIGABRT);
  const std::vector<std::string> lines = linesOf(child.standardOutput);
  ASSERT_EQ(lines.size(), 7U);
  EXPECT_EQ(lines[6], "[IOProc] patchCount=-5 routing...");
}

TEST_F(FirstCycleTraceTest, CountsChannelsOfBuffersWithoutDataAndBeyondTheContext) {
  input_.addWithoutData(100).add(50, 4);
  output_.addWithoutData(30, 480);
  const std::vector<std::string> lines = linesOfCycles();
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_EQ(lines[3], "[IOProc] inCh=160 — flattening output ABL...");
  EXPECT_EQ(lines[4], "[IOProc] outCh=32");
}

TEST_F(FirstCycleTraceTest, ComesFromTheHalsCallbackToo) {
  const ChildResult child = runInChild([this] {
    halIOProc(1, nullptr, input_.get(), nullptr, output_.get(), nullptr, &context_);
    halIOProc(1, nullptr, input_.get(), nullptr, output_.get(), nullptr, &context_);
  });
  EXPECT_EQ(linesOf(child.standardOutput).size(), 8U);
}

}  // namespace
}  // namespace tolvane::test
