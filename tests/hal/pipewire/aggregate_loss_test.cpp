// Members of an aggregate go away and come back while the others play.
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/aggregate_fixture.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"
#include "hal/promised_times.h"
#include "support/stall_watch.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::IsEmpty;

constexpr std::uint32_t kCycleFrames = 256;

/// A running aggregate of the first and the second card with routes_, and a rig that hears its outputs.
class PipeWireAggregateLoss : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    writeAggregates(server_, aggregateText("Stage", {kFirst, kSecond}));
    device_ = deviceNamed(*driver_, GetParam());
    client_.emplace(device_, routes_);
    rig_ = std::make_unique<PatchRig>(std::vector<PipeWireCard>{kFirst, kSecond}, routes_);
    started_ = driver_->start(device_, *client_);
    ASSERT_EQ(started_.status, noErr);
    ASSERT_TRUE(rig_->settle());
  }

  /// Removes the card between two cycles. A server that loses a node in the middle of a cycle does not run
  /// the nodes after it in that cycle, whoever owns them.
  void removeFirst() {
    waitForCycle();
    hardware_.removeCard(kFirst);
  }

  void waitForCycle() const {
    const auto framesNow = [&] { return rig_->recorder().received().front().frames; };
    const std::uint64_t before = framesNow();
    while (framesNow() == before) std::this_thread::sleep_for(1ms);
  }

  [[nodiscard]] ReceivedSignal heardAt(std::size_t output) const {
    return rig_->recorder().received().at(output);
  }

  /// Every sample of the output since the recorder's last reset was right.
  void expectUnbroken(std::size_t output) const {
    const ReceivedSignal signal = heardAt(output);
    EXPECT_EQ(signal.rightFrames, signal.frames) << output;
    EXPECT_EQ(signal.minDelayFrames, 0) << output;
    EXPECT_EQ(signal.maxDelayFrames, 0) << output;
  }

  /// Waits until three more cycles have been heard.
  [[nodiscard]] bool waitForMore() const {
    return rig_->waitForFrames(rig_->recorder().received().front().frames + std::uint64_t{3} * kCycleFrames);
  }

  /// How long a stop takes after a loss.
  template <class Before>
  std::chrono::steady_clock::duration timeOfStop(const Before& before) {
    if (!started_.session) {
      hardware_.addCard(kFirst);
      started_ = driver_->start(deviceNamed(*driver_, GetParam()), *client_);
    }
    removeFirst();
    before();
    return timeOf([&] { started_.session.reset(); });
  }

  // Routes stay within the cards and cross between them: outputs 0 and 1 are the first card's, 2 to 4 the
  // second's; inputs 0 to 3 the first card's, 4 and 5 the second's.
  const std::vector<PatchConnection> routes_{
      {3, 0, 1.0F, true}, {4, 1, 1.0F, true}, {5, 2, 1.0F, true}, {4, 3, 1.0F, true}, {2, 4, 1.0F, true}};
  // At this pace no cycle is missed even if the machine stands still, so every fault heard is the graph's.
  PipeWireServer server_{{kFirst, kSecond}, PipeWirePace::slow};
  std::unique_ptr<hal::Driver> driver_ = hal::makePipeWireDriver();
  hal::DeviceInfo device_;
  std::optional<RoutingClient> client_;
  std::unique_ptr<PatchRig> rig_;
  hal::StartResult started_;
  PipeWireClient hardware_;
};

TEST_P(PipeWireAggregateLoss, TheOtherPlaysOnWithoutAWrongSampleAndTheLostOneSoundsAgain) {
  removeFirst();
  ASSERT_TRUE(waitForMore());
  EXPECT_TRUE(client_->isAlive());
  // The lost card's input is silent; no other signal takes its place.
  const ReceivedSignal fromLost = heardAt(4);
  EXPECT_EQ(fromLost.wrongFrames, 0U);
  EXPECT_GT(fromLost.missingFrames, 0U);
  // The lost card keeps its channels in the aggregate.
  EXPECT_EQ(deviceNamed(*driver_, device_.name).inputStreams, device_.inputStreams);
  EXPECT_EQ(deviceNamed(*driver_, device_.name).outputStreams, device_.outputStreams);

  hardware_.addCard(kFirst);
  rig_->linkCard(0);
  const std::uint64_t silent = heardAt(0).rightFrames;
  EXPECT_TRUE(eventually([&] { return heardAt(0).rightFrames > silent && client_->isAlive(); }));
  ASSERT_TRUE(waitForMore());
  // No gap from before the loss until now.
  expectUnbroken(2);
  expectUnbroken(3);
  EXPECT_EQ(heardAt(0).wrongFrames, 0U);
  EXPECT_EQ(heardAt(4).wrongFrames, 0U);
  // Every channel is the same as before.
  EXPECT_TRUE(rig_->settle());
}

TEST_P(PipeWireAggregateLoss, AnotherCardNeverTakesThePlaceOfTheLostOne) {
  const PipeWireCard other{.name = "other", .inputs = 4, .outputs = 2, .cardId = 903};
  removeFirst();
  // The server gives `other` the identifiers that the first card had.
  hardware_.addCard(other);
  EXPECT_EQ(deviceNamed(*driver_, "other").uid, "pipewire:other");
  EXPECT_EQ(deviceNamed(*driver_, device_.name).inputStreams, device_.inputStreams);
  rig_->recorder().reset();
  ASSERT_TRUE(waitForMore());
  expectUnbroken(2);
  expectUnbroken(3);
  EXPECT_EQ(heardAt(4).missingFrames, heardAt(4).frames);
}

TEST_P(PipeWireAggregateLoss, ItIsLostOnlyWithTheLastMember) {
  hardware_.removeCard(kSecond);
  ASSERT_TRUE(waitForMore());
  EXPECT_TRUE(client_->isAlive());
  removeFirst();
  EXPECT_TRUE(eventually([&] { return !client_->isAlive(); }));
  EXPECT_THAT(listedDevices(*driver_, 0), IsEmpty());
  hardware_.addCard(kSecond);
  EXPECT_TRUE(eventually([&] { return client_->isAlive(); }));
  EXPECT_EQ(deviceNamed(*driver_, device_.name).inputStreams, device_.inputStreams);
  hardware_.addCard(kFirst);
  rig_->linkCard(0);
  rig_->linkCard(1);
  EXPECT_TRUE(rig_->settle());
}

TEST_P(PipeWireAggregateLoss, AServerThatIsKilledAndStartedAgainIsHeardAgain) {
  rig_.reset();
  server_.kill();
  EXPECT_TRUE(eventually([&] { return !client_->isAlive(); }));
  server_.start();
  EXPECT_TRUE(eventually([&] { return client_->isAlive(); }));
  rig_ = std::make_unique<PatchRig>(std::vector<PipeWireCard>{kFirst, kSecond}, routes_);
  EXPECT_TRUE(rig_->settle());
}

TEST_P(PipeWireAggregateLoss, AStopIsInTimeWhileAMemberIsAwayAndThereIsNoCallAfterIt) {
  expectWithin(kStopBound, [&] { return timeOfStop([] {}); });
  const std::uint64_t cycles = client_->cycles();
  ASSERT_TRUE(waitForMore());
  EXPECT_EQ(client_->cycles(), cycles);
}

TEST_P(PipeWireAggregateLoss, AStopIsInTimeWhileAMemberIsAwayAndTheServerHangs) {
  std::uint64_t cycles = 0;
  expectWithin(kStopBound, [&] {
    const auto time = timeOfStop([&] { server_.hang(); });
    cycles = client_->cycles();
    server_.unhang();
    return time;
  });
  ASSERT_TRUE(waitForMore());
  EXPECT_EQ(client_->cycles(), cycles);
}

TEST_P(PipeWireAggregateLoss, TwentyLossesAndReturnsAndTheOtherUnbroken) {
  for (int round = 0; round < 20; ++round) {
    // Several rounds fit between two cycles.
    if (round % 5 == 0) waitForCycle();
    hardware_.removeCard(kFirst);
    hardware_.addCard(kFirst);
  }
  rig_->linkCard(0);
  ASSERT_TRUE(waitForMore());
  expectUnbroken(2);
  expectUnbroken(3);
  EXPECT_TRUE(rig_->settle());
}

INSTANTIATE_TEST_SUITE_P(Kinds, PipeWireAggregateLoss, testing::Values("All Interfaces", "Stage"),
                         [](const auto& kind) { return std::string(kind.param).substr(0, 3); });

TEST(PipeWireAggregateReturn, AMemberThatComesBackIsHeardInTime) {
  const PipeWireServer server({kFirst, kSecond});
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo device = deviceNamed(*driver, "All Interfaces");
  const std::vector<PatchConnection> routes{{3, 0, 1.0F, true}, {4, 2, 1.0F, true}};
  RoutingClient client(device, routes);
  PatchRig rig({kFirst, kSecond}, routes);
  const hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  ASSERT_TRUE(rig.settle());
  expectWithin(kReturnBound, [&] {
    rig.client().removeCard(kFirst);
    rig.client().addCard(kFirst);
    rig.linkCard(0);
    return timeOf([&] { EXPECT_TRUE(rig.settle(25ms)); });
  });
}

TEST(PipeWireAggregateStart, AMemberThatIsMissingAtTheStartPlaysInItsPlaceWhenItComes) {
  const PipeWireServer server({kSecond}, PipeWirePace::patient);
  writeAggregates(server, aggregateText("Stage", {kFirst, kSecond}));
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo device = deviceNamed(*driver, "Stage");
  const std::vector<PatchConnection> routes{{3, 0, 1.0F, true}, {4, 2, 1.0F, true}, {5, 4, 1.0F, true}};
  RoutingClient client(device, routes);
  const hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  PipeWireClient hardware;
  hardware.addCard(kFirst);
  PatchRig rig({kFirst, kSecond}, routes);
  EXPECT_TRUE(rig.settle());
}

TEST(PipeWireAggregateStart, AllInterfacesKeepsItsCardsWhileItRunsAndTakesNewOnesAtTheNextStart) {
  const PipeWireCard third{.name = "third", .inputs = 1, .outputs = 1, .cardId = 903};
  const PipeWireServer server({kFirst, kSecond});
  const auto driver = hal::makePipeWireDriver();
  const hal::DeviceInfo device = deviceNamed(*driver, "All Interfaces");
  RoutingClient client(device, {});
  hal::StartResult started = driver->start(device, client);
  ASSERT_EQ(started.status, noErr);
  PipeWireClient hardware;
  hardware.addCard(third);
  EXPECT_EQ(deviceNamed(*driver, "All Interfaces").inputStreams, (hal::StreamLayout{4, 2}));
  started.session.reset();
  EXPECT_EQ(deviceNamed(*driver, "All Interfaces").inputStreams, (hal::StreamLayout{4, 2, 1}));
}

}  // namespace
}  // namespace tolvane::test
