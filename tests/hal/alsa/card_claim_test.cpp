// A card that a sound server uses is asked for by name, and is ours from then on.
#include <chrono>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>

#include "hal/alsa/card_owner.h"
#include "hal/alsa/one_card.h"
#include "support/eventually.h"

namespace tolvane::hal::alsa {
namespace {

using namespace std::chrono_literals;
using Manner = test::CardOwner::Manner;
using test::CardOwner;
using test::OneCard;

class CardClaim : public testing::Test {
 protected:
  CardClaim() {
    test::PrivateBus::shared();
    giveToServer();
  }

  void giveToServer() { machine_.isServers = machine_.isHeld = true; }
  void releaseFromServer() { machine_.isServers = machine_.isHeld = false; }
  Driver& driver() { return machine_.driver(); }

  OneCard machine_;
  const test::Asker asker_{OneCard::kNumber};
  test::DeafClient client_;
};

TEST_F(CardClaim, TakesTheCardFromAServerThatReleasesIt) {
  CardOwner server(OneCard::kNumber, Manner::releases, [this] { releaseFromServer(); });
  const DeviceInfo held = machine_.card();
  EXPECT_TRUE(held.isHeld);
  EXPECT_EQ(held.alsaCards, std::vector{OneCard::kNumber});
  EXPECT_EQ(driver().claim(held), noErr);
  const DeviceInfo ours = machine_.card();
  EXPECT_FALSE(ours.isHeld);
  EXPECT_EQ(ours.uid, held.uid);
  EXPECT_FALSE(ours.outputStreams.empty());
  StartResult started = driver().start(ours, client_);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(test::eventually([&] { return client_.cycles > 0; }));
  EXPECT_EQ(server.asked().size(), 1U);
}

TEST_F(CardClaim, WaitsUntilTheServerHasClosedTheCard) {
  std::thread closing;
  {
    const CardOwner server(OneCard::kNumber, Manner::releases, [&] {
      closing = std::thread([this] {
        std::this_thread::sleep_for(300ms);
        releaseFromServer();
      });
    });
    EXPECT_EQ(driver().claim(machine_.card()), noErr);
    EXPECT_FALSE(machine_.isServers);
  }
  closing.join();
}

/// It finishes what it had begun: as a session manager that is asked while it makes the card's nodes.
TEST_F(CardClaim, OutlastsAServerThatOpensTheCardOnceMore) {
  const CardOwner server(OneCard::kNumber, Manner::releases, [this] { releaseFromServer(); });
  ASSERT_EQ(driver().claim(machine_.card()), noErr);
  const DeviceInfo card = machine_.card();
  machine_.isHeld = true;
  EXPECT_EQ(driver().setBufferFrames(card, 512), noErr);
  std::thread closing([this] {
    std::this_thread::sleep_for(300ms);
    machine_.isHeld = false;
  });
  EXPECT_EQ(driver().start(card, client_).status, noErr);
  closing.join();
}

TEST_F(CardClaim, WaitsUntilThePcmsAreClosed) {
  std::thread closing;
  {
    const CardOwner server(OneCard::kNumber, Manner::releases, [&] {
      machine_.isServers = false;
      closing = std::thread([this] {
        std::this_thread::sleep_for(300ms);
        machine_.isHeld = false;
      });
    });
    EXPECT_EQ(driver().claim(machine_.card()), noErr);
    EXPECT_FALSE(machine_.isHeld);
  }
  closing.join();
}

TEST_F(CardClaim, ReservesTheCardUntilTheFirstSessionEnds) {
  CardOwner server(OneCard::kNumber, Manner::releases, [this] { releaseFromServer(); });
  ASSERT_EQ(driver().claim(machine_.card()), noErr);
  EXPECT_TRUE(asker_.isReserved());
  EXPECT_FALSE(asker_.requestRelease(0));
  StartResult started = driver().start(machine_.card(), client_);
  ASSERT_EQ(started.status, noErr);
  EXPECT_FALSE(asker_.requestRelease(0));
  started.session.reset();
  EXPECT_FALSE(asker_.isReserved());
}

TEST_F(CardClaim, OfACardThatTheServerKeepsIsRefused) {
  const CardOwner server(OneCard::kNumber, Manner::refuses);
  EXPECT_EQ(driver().claim(machine_.card()), OSStatus{kAudioDevicePermissionsError});
  EXPECT_TRUE(machine_.card().isHeld);
}

TEST_F(CardClaim, OfACardThatTheServerDoesNotCloseIsRefusedAndGivesTheReservationBack) {
  {
    const CardOwner server(OneCard::kNumber, Manner::releases);
    EXPECT_EQ(driver().claim(machine_.card()), OSStatus{kAudioDevicePermissionsError});
  }
  EXPECT_TRUE(machine_.card().isHeld);
  EXPECT_FALSE(asker_.isReserved());
}

TEST_F(CardClaim, OfACardWhoseServerDoesNotReserveIsRefusedAtOnce) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(driver().claim(machine_.card()), OSStatus{kAudioDevicePermissionsError});
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
  EXPECT_FALSE(asker_.isReserved());
}

TEST_F(CardClaim, WithoutABusIsUnsupported) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  EXPECT_EQ(driver().claim(machine_.card()), OSStatus{kAudioHardwareUnsupportedOperationError});
  setenv("DBUS_SESSION_BUS_ADDRESS", test::PrivateBus::shared().address().c_str(), 1);
  EXPECT_TRUE(machine_.card().isHeld);
}

TEST_F(CardClaim, OfACardThatHasGoneFails) {
  const DeviceInfo card = machine_.card();
  machine_.isThere = false;
  EXPECT_EQ(driver().claim(card), OSStatus{kAudioHardwareBadDeviceError});
}

TEST_F(CardClaim, LastsWhenTheServerHasTheCardAgain) {
  {
    const CardOwner server(OneCard::kNumber, Manner::releases, [this] { releaseFromServer(); });
    ASSERT_EQ(driver().claim(machine_.card()), noErr);
  }
  driver().start(machine_.card(), client_);
  ASSERT_FALSE(asker_.isReserved());
  const CardOwner server(OneCard::kNumber, Manner::releases, [this] { releaseFromServer(); });
  giveToServer();
  EXPECT_FALSE(machine_.card().isHeld);
  EXPECT_EQ(driver().start(machine_.card(), client_).status, noErr);
  EXPECT_EQ(server.asked().size(), 1U);
}

/// A card that nobody had when we started on it.
TEST_F(CardClaim, OfALostCardIsMadeByItsSession) {
  releaseFromServer();
  StartResult started = driver().start(machine_.card(), client_);
  ASSERT_EQ(started.status, noErr);
  machine_.isThere = false;
  ASSERT_TRUE(test::eventually([this] { return !client_.alive; }));
  EXPECT_TRUE(driver().devices().empty());
  // The session gives the reservation back on a thread of its own.
  ASSERT_TRUE(test::eventually([this] { return !asker_.isReserved(); }));
  // It returns, and the server is faster.
  const CardOwner server(OneCard::kNumber, Manner::releases, [this] { releaseFromServer(); });
  giveToServer();
  machine_.isThere = true;
  const DeviceInfo returned = machine_.card();
  EXPECT_FALSE(returned.isHeld);
  EXPECT_FALSE(returned.outputStreams.empty());
  started.session.reset();
  test::DeafClient another;
  EXPECT_EQ(driver().start(machine_.card(), another).status, noErr);
}

}  // namespace
}  // namespace tolvane::hal::alsa
