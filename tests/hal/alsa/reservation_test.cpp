// A card is asked for on the session bus before it is opened, kept while we run on it, and given back.
#include <chrono>
#include <cstdlib>
#include <limits>

#include <gtest/gtest.h>

#include "hal/alsa/card_owner.h"
#include "hal/alsa/one_card.h"
#include "support/eventually.h"

namespace tolvane::hal::alsa {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Manner = test::CardOwner::Manner;
using test::CardOwner;
using test::OneCard;

constexpr OSStatus kSomebodyElses = kAudioDevicePermissionsError;

class CardReservation : public testing::Test {
 protected:
  CardReservation() { test::PrivateBus::shared(); }

  StartResult start() { return machine_.driver().start(card_, client_); }

  OneCard machine_;
  const DeviceInfo card_ = machine_.card();
  const test::Asker asker_{OneCard::kNumber};
  test::DeafClient client_;
};

TEST_F(CardReservation, LastsFromTheStartToTheStop) {
  EXPECT_FALSE(asker_.isReserved());
  StartResult started = start();
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(asker_.isReserved());
  started.session.reset();
  EXPECT_FALSE(asker_.isReserved());
}

TEST_F(CardReservation, IsNotMadeByAList) {
  machine_.driver().devices();
  EXPECT_EQ(machine_.driver().setBufferFrames(card_, 512), noErr);
  EXPECT_FALSE(asker_.isReserved());
}

TEST_F(CardReservation, IsNotGivenToWhoeverAsks) {
  const StartResult started = start();
  ASSERT_EQ(started.status, noErr);
  EXPECT_FALSE(asker_.requestRelease(0));
  EXPECT_FALSE(asker_.requestRelease(std::numeric_limits<std::int32_t>::max()));
  EXPECT_FALSE(asker_.takeName());
  EXPECT_TRUE(asker_.isReserved());
  const int cycles = client_.cycles;
  EXPECT_TRUE(test::eventually([&] { return client_.cycles > cycles; }));
}

TEST_F(CardReservation, SaysWhoHasTheCard) {
  const StartResult started = start();
  ASSERT_EQ(started.status, noErr);
  EXPECT_EQ(asker_.property("ApplicationName"), "Tolvane");
  EXPECT_EQ(asker_.property("ApplicationDeviceName"), "A card");
  EXPECT_EQ(asker_.priority(), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(asker_.propertyCount(), 3U);
  EXPECT_EQ(asker_.property("NoSuchProperty"), "");
}

TEST_F(CardReservation, AnswersACallThatComesAtAnyMomentOfTheOneBefore) {
  const StartResult started = start();
  ASSERT_EQ(started.status, noErr);
  for (int i = 0; i < 4000; ++i) ASSERT_EQ(asker_.answersToTwo(i % 200 * 1us), 2) << "pair " << i;
}

TEST_F(CardReservation, OfAnOwnerWhoRefusesStaysItsOwn) {
  const CardOwner owner(OneCard::kNumber, Manner::refuses);
  EXPECT_EQ(start().status, kSomebodyElses);
  EXPECT_EQ(owner.asked(), std::vector<std::int32_t>{std::numeric_limits<std::int32_t>::max()});
  EXPECT_TRUE(asker_.isReserved());
}

TEST_F(CardReservation, OfAnOwnerWhoDoesNotAnswerStaysItsOwn) {
  const CardOwner owner(OneCard::kNumber, Manner::isSilent);
  const auto begin = Clock::now();
  EXPECT_EQ(start().status, kSomebodyElses);
  EXPECT_GE(Clock::now() - begin, 1s);
  EXPECT_TRUE(asker_.isReserved());
}

TEST_F(CardReservation, OfAnOwnerWhoReleasesItIsOurs) {
  machine_.isHeld = true;
  const CardOwner owner(OneCard::kNumber, Manner::releases, [this] { machine_.isHeld = false; });
  StartResult started = start();
  ASSERT_EQ(started.status, noErr);
  EXPECT_FALSE(asker_.takeName());
  started.session.reset();
  EXPECT_FALSE(asker_.isReserved());
}

TEST_F(CardReservation, OfAnOwnerWhoClosesTheCardAfterItsAnswerIsOurs) {
  machine_.isHeld = true;
  std::thread closing;
  {
    const CardOwner owner(OneCard::kNumber, Manner::releases, [&] {
      closing = std::thread([this] {
        std::this_thread::sleep_for(300ms);
        machine_.isHeld = false;
      });
    });
    EXPECT_EQ(start().status, noErr);
  }
  closing.join();
}

TEST_F(CardReservation, IsGivenBackIfTheCardStaysInUse) {
  machine_.isHeld = true;
  const CardOwner owner(OneCard::kNumber, Manner::releases);
  EXPECT_EQ(start().status, kSomebodyElses);
  machine_.isHeld = false;
  EXPECT_TRUE(asker_.takeName());
}

TEST_F(CardReservation, OfAnOwnerWhoLeavesIsOurs) {
  const CardOwner owner(OneCard::kNumber, Manner::leaves);
  const StartResult started = start();
  EXPECT_EQ(started.status, noErr);
  EXPECT_TRUE(asker_.isReserved());
}

TEST_F(CardReservation, OfACardThatHasGoneEndsAtOnce) {
  const StartResult started = start();
  ASSERT_EQ(started.status, noErr);
  machine_.isThere = false;
  EXPECT_TRUE(test::eventually([this] { return !client_.alive; }));
  EXPECT_TRUE(test::eventually([this] { return !asker_.isReserved(); }));
}

TEST_F(CardReservation, OneSessionDoesNotTakeTheCardFromAnother) {
  const StartResult first = start();
  ASSERT_EQ(first.status, noErr);
  test::DeafClient another;
  EXPECT_EQ(machine_.driver().start(card_, another).status, kSomebodyElses);
}

class UnreservedCard : public testing::Test {
 protected:
  UnreservedCard() { test::PrivateBus::shared(); }

  OneCard machine_;
  const DeviceInfo card_ = machine_.card();
  test::DeafClient client_;
};

TEST_F(UnreservedCard, RunsWithoutABus) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  EXPECT_EQ(machine_.driver().start(card_, client_).status, noErr);
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
  EXPECT_EQ(machine_.driver().start(card_, client_).status, noErr);
  setenv("DBUS_SESSION_BUS_ADDRESS", test::PrivateBus::shared().address().c_str(), 1);
}

TEST_F(UnreservedCard, RunsWithABusThatHangs) {
  test::PrivateBus::shared().hang(true);
  const StartResult started = machine_.driver().start(card_, client_);
  test::PrivateBus::shared().hang(false);
  EXPECT_EQ(started.status, noErr);
}

TEST_F(UnreservedCard, EndsWithABusThatHangsAndWithABusThatHasGone) {
  StartResult started = machine_.driver().start(card_, client_);
  ASSERT_EQ(started.status, noErr);
  test::PrivateBus::shared().hang(true);
  const auto begin = Clock::now();
  started.session.reset();
  EXPECT_LT(Clock::now() - begin, 2s);
  test::PrivateBus::shared().hang(false);
}

}  // namespace
}  // namespace tolvane::hal::alsa
