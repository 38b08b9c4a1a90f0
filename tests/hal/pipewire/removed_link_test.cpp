// Somebody removes links of ours while their ports stay, as with a patch bay.
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/pipewire/listed_devices.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_driver.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;
using hal::RemovedLinks;

class PipeWireRemovedLink : public ::testing::Test {
 protected:
  void SetUp() override { start(); }

  void start() {
    client_.emplace(device_, routes_);
    started_ = driver_->start(device_, *client_);
    ASSERT_EQ(started_.status, noErr);
  }

  [[nodiscard]] bool isReported(const RemovedLinks& removed) const {
    return eventually([&] { return client_->removed() == removed; });
  }

  /// Whether this part of the patch is heard, and nothing else.
  [[nodiscard]] bool isHeard(const std::vector<PatchConnection>& routes) const {
    PatchRig rig(kCard, routes);
    return rig.settle();
  }

  /// Longer than a missing link would be missing.
  static void waitForMore() { std::this_thread::sleep_for(300ms); }

  PipeWireServer server_{{kCard}};
  std::unique_ptr<hal::Driver> driver_ = hal::makePipeWireDriver();
  hal::DeviceInfo device_ = onlyDevice(*driver_);
  std::vector<PatchConnection> routes_ = straightThrough(4);
  std::optional<RoutingClient> client_;
  hal::StartResult started_;
};

const PipeWirePort kSecondInput{"card.source", false, 1};
const PipeWirePort kThirdOutput{"card.sink", true, 2};
const RemovedLinks kAll{{0, 1, 2, 3}, {0, 1, 2, 3}};

TEST_F(PipeWireRemovedLink, StaysRemovedAndIsReportedOnce) {
  PipeWireClient user;
  user.removeLinksOf(kSecondInput);
  EXPECT_TRUE(isReported({{1}, {}}));
  user.removeLinksOf(kThirdOutput);
  EXPECT_TRUE(isReported({{1}, {2}}));
  waitForMore();
  EXPECT_EQ(client_->removals(), 2);
  EXPECT_EQ(user.linkCount(), 6U);
  EXPECT_TRUE(client_->isAlive());
  EXPECT_TRUE(isHeard({routes_[0], routes_[3]}));
}

TEST_F(PipeWireRemovedLink, ComesBackWithTheNextStart) {
  PipeWireClient user;
  user.removeLinksOf(kSecondInput);
  ASSERT_TRUE(isReported({{1}, {}}));
  started_.session.reset();
  start();
  EXPECT_EQ(client_->removals(), 0);
  EXPECT_TRUE(isHeard(routes_));
}

TEST_F(PipeWireRemovedLink, ComesBackWithItsChannel) {
  PipeWireClient user;
  user.removeLinksOf(kSecondInput);
  user.removeLinksOf(kThirdOutput);
  ASSERT_TRUE(isReported({{1}, {2}}));
  user.removeNode("card.source");
  EXPECT_TRUE(isReported({{}, {2}}));
  user.addNode(nodesOf(kCard)[0]);
  EXPECT_TRUE(isHeard({routes_[0], routes_[1], routes_[3]}));
  EXPECT_TRUE(client_->isAlive());
}

TEST_F(PipeWireRemovedLink, ComesBackWithTheServer) {
  PipeWireClient().removeLinksOf(kSecondInput);
  ASSERT_TRUE(isReported({{1}, {}}));
  server_.kill();
  EXPECT_TRUE(isReported({}));
  server_.start();
  EXPECT_TRUE(eventually([&] { return client_->isAlive(); }));
  EXPECT_TRUE(isHeard(routes_));
}

TEST_F(PipeWireRemovedLink, TogetherWithAllOthersDoesNotMakeTheDeviceGo) {
  PipeWireClient user;
  ASSERT_EQ(user.linkCount(), 8U);
  user.removeLinks();
  EXPECT_TRUE(isReported(kAll));
  waitForMore();
  EXPECT_EQ(user.linkCount(), 0U);
  EXPECT_EQ(client_->losses(), 0);
  EXPECT_EQ(listedDevices(*driver_, 1).size(), 1U);
}

TEST_F(PipeWireRemovedLink, IsNotReportedWhereThePortHasGone) {
  PipeWireClient hardware;
  for (int round = 0; round < 10; ++round) {
    hardware.removeCard(kCard);
    ASSERT_TRUE(eventually([&] { return !client_->isAlive(); }));
    hardware.addCard(kCard);
    ASSERT_TRUE(eventually([&] { return client_->isAlive(); }));
  }
  EXPECT_EQ(client_->removals(), 0);
}

}  // namespace
}  // namespace tolvane::test
