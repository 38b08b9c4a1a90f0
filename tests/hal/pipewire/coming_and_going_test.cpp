// A routed device goes away and comes back.
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include "hal/counting_observer.h"
#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

using ::testing::IsEmpty;

std::size_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// A routed card on a private server.
class PipeWireComingAndGoing : public ::testing::Test {
 protected:
  explicit PipeWireComingAndGoing(PipeWirePace pace = PipeWirePace::realTime) : server_({kCard}, pace) {}

  void SetUp() override {
    device_ = onlyDevice(*driver_);
    client_.emplace(device_, routes_);
    started_ = driver_->start(device_, *client_);
    ASSERT_EQ(started_.status, noErr);
  }

  /// Whether the routed audio arrives correctly at a temporary rig.
  [[nodiscard]] bool isHeard() const {
    PatchRig rig(kCard, routes_);
    return rig.settle(kAFewCycles);
  }

  static constexpr std::chrono::milliseconds kAFewCycles{25};

  PipeWireServer server_;
  std::unique_ptr<hal::Driver> driver_ = hal::makePipeWireDriver();
  hal::DeviceInfo device_;
  std::vector<PatchConnection> routes_ = straightThrough(4);
  std::optional<RoutingClient> client_;
  hal::StartResult started_;
};

TEST_F(PipeWireComingAndGoing, AServerThatIsKilledAndStartedAgainIsHeardAgain) {
  ASSERT_TRUE(isHeard());
  server_.kill();
  EXPECT_TRUE(eventually([&] { return !client_->isAlive(); }));
  const std::uint64_t cycles = client_->cycles();
  EXPECT_THAT(listedDevices(*driver_, 0), IsEmpty());
  EXPECT_EQ(client_->cycles(), cycles);
  server_.start();
  EXPECT_TRUE(eventually([&] { return client_->isAlive(); }));
  EXPECT_TRUE(isHeard());
  EXPECT_EQ(listedDevices(*driver_, 1).size(), 1U);
}

TEST_F(PipeWireComingAndGoing, ACardThatIsPulledAndPutBackIsHeardAgain) {
  PipeWireClient hardware;
  hardware.removeCard(kCard);
  EXPECT_TRUE(eventually([&] { return !client_->isAlive(); }));
  EXPECT_THAT(listedDevices(*driver_, 0), IsEmpty());
  hardware.addCard(kCard);
  EXPECT_TRUE(eventually([&] { return client_->isAlive(); }));
  EXPECT_TRUE(isHeard());
  EXPECT_EQ(onlyDevice(*driver_).uid, device_.uid);
}

TEST_F(PipeWireComingAndGoing, AnotherCardNeverTakesThePlaceOfOneThatIsAway) {
  PipeWireClient hardware;
  const PipeWireCard other{.name = "other", .inputs = 4, .outputs = 4, .cardId = 901};
  hardware.removeCard(kCard);
  EXPECT_TRUE(eventually([&] { return !client_->isAlive(); }));
  // The server gives `other` the identifiers that the first card had.
  hardware.addCard(other);
  EXPECT_EQ(onlyDevice(*driver_).uid, "pipewire:other");
  EXPECT_EQ(hardware.linkCount(), 0U);
  EXPECT_FALSE(client_->isAlive());
}

TEST_F(PipeWireComingAndGoing, AStopWhileTheDeviceIsAwayIsAsGoodAsAny) {
  server_.kill();
  EXPECT_TRUE(eventually([&] { return !client_->isAlive(); }));
  started_.session.reset();
  server_.start();
  ASSERT_EQ(listedDevices(*driver_, 1).size(), 1U);
  PipeWireClient observer;
  EXPECT_EQ(observer.linkCount(), 0U);
}

TEST_F(PipeWireComingAndGoing, AHundredServersOneAfterAnother) {
  const auto endAndBeginAnew = [&] {
    server_.kill();
    ASSERT_TRUE(eventually([&] { return !client_->isAlive(); }));
    server_.start();
    ASSERT_TRUE(eventually([&] { return client_->isAlive(); }));
    ASSERT_TRUE(isHeard());
  };
  for (int round = 0; round < 20; ++round) endAndBeginAnew();
  const std::size_t descriptors = openDescriptors();
  const std::size_t bytes = ::mallinfo2().uordblks;
  for (int round = 20; round < 100; ++round) endAndBeginAnew();
  EXPECT_LE(openDescriptors(), descriptors + 2);
  EXPECT_LT(::mallinfo2().uordblks, bytes + std::size_t{256} * 1024);
}

TEST_F(PipeWireComingAndGoing, AHundredRemovalsAndReturns) {
  PipeWireClient hardware;
  const auto pullAndPutBack = [&] {
    hardware.removeCard(kCard);
    ASSERT_TRUE(eventually([&] { return !client_->isAlive(); }));
    hardware.addCard(kCard);
    ASSERT_TRUE(eventually([&] { return client_->isAlive(); }));
    ASSERT_TRUE(isHeard());
  };
  for (int round = 0; round < 20; ++round) pullAndPutBack();
  const std::size_t descriptors = openDescriptors();
  for (int round = 20; round < 100; ++round) pullAndPutBack();
  // The test's client keeps something of each object that it has made; the driver does not.
  EXPECT_LE(openDescriptors(), descriptors + 4);
}

class PipeWireQuantum : public PipeWireComingAndGoing {
 protected:
  PipeWireQuantum() : PipeWireComingAndGoing(PipeWirePace::patient) {}

  static constexpr std::chrono::milliseconds kAFewCycles{8};
};

TEST_F(PipeWireQuantum, IsChangedAThousandTimes) {
  PatchRig rig(kCard, routes_);
  ASSERT_TRUE(rig.settle());
  const std::size_t descriptors = openDescriptors();
  const std::size_t bytes = ::mallinfo2().uordblks;
  for (int round = 0; round < 1000; ++round) {
    const std::uint32_t quantum = 64U << (static_cast<unsigned>(round) % 5);
    ASSERT_TRUE(rig.changeQuantum(quantum, kAFewCycles)) << round;
    ASSERT_EQ(client_->bufferFrames(), quantum) << round;
    ASSERT_TRUE(rig.settle(kAFewCycles)) << round;
  }
  // From 1.4 on the library keeps the memory of one or two buffers for later.
  EXPECT_LE(openDescriptors(), descriptors + 4);
  EXPECT_LT(::mallinfo2().uordblks, bytes + std::size_t{256} * 1024);
  EXPECT_TRUE(client_->isAlive());
}

TEST(PipeWireChanges, AnObserverIsToldOfArrivalsDeparturesAndTheServersReturn) {
  PipeWireServer server({kCard});
  CountingObserver observer;
  const auto driver = hal::makePipeWireDriver();
  driver->setObserver(observer);
  ASSERT_EQ(listedDevices(*driver, 1).size(), 1U);
  EXPECT_TRUE(eventually([&] { return observer.told() >= 1; }));
  PipeWireClient hardware;
  int told = observer.told();
  hardware.addCard({.name = "usb", .inputs = 2, .outputs = 2, .cardId = 901});
  EXPECT_TRUE(eventually([&] { return observer.told() > told; }));
  told = observer.told();
  server.kill();
  EXPECT_TRUE(eventually([&] { return observer.told() > told; }));
  told = observer.told();
  server.start();
  EXPECT_TRUE(eventually([&] { return observer.told() > told; }));
  EXPECT_EQ(listedDevices(*driver, 1).size(), 1U);
}

}  // namespace
}  // namespace tolvane::test
