// Changes that the driver reports by itself: devices and servers that come and go.
#include "hal/counting_observer.h"
#include "hal/jack/jack_fixture.h"

namespace tolvane::test {
namespace {

class JackChanges : public JackFixture {
 protected:
  /// Sets the observer and waits until it has been told of the initial state.
  void observe() {
    driver_->setObserver(observer_);
    EXPECT_TRUE(eventually([this] { return observer_.told() > 0; }));
  }

  /// Waits until nothing more is told, and counts all of it as known.
  void settle() {
    int before = -1;
    eventually([&] {
      const bool still = before == observer_.told();
      before = observer_.told();
      std::this_thread::sleep_for(100ms);
      return still;
    });
    known_ = observer_.told();
  }

  bool hears() {
    return eventually([this] { return observer_.told() > known_; });
  }

  /// Asks for devices only when told of a change, as a HAL does. Asks again only if the list came too late.
  bool isListedWhenTold(const std::string& uid, bool wanted) {
    return eventually([&] {
      const int told = observer_.told();
      if (told == known_) return false;
      known_ = told;
      const auto list = devices();
      return wanted ==
             std::any_of(list.begin(), list.end(), [&](const auto& info) { return info.uid == uid; });
    });
  }

  /// The same for a server that has gone.
  bool noneIsListedWhenTold() {
    return eventually([&] {
      const int told = observer_.told();
      if (told == known_) return false;
      known_ = told;
      return driver_->devices().empty();
    });
  }

  ~JackChanges() override { driver_.reset(); }  // before the observer

  CountingObserver observer_;
  int known_ = 0;
};

TEST_F(JackChanges, ADeviceThatComesAndGoesIsTold) {
  startServer();
  observe();
  settle();
  {
    JackTestClient card = JackTestClient::card("card", 2, 2);
    card.activate();
    EXPECT_TRUE(isListedWhenTold("jack:card", true));
    settle();
  }
  EXPECT_TRUE(isListedWhenTold("jack:card", false));
}

TEST_F(JackChanges, TheAnswerBeforeTheChangeDoesNotServe) {
  startServer();
  observe();
  settle();
  JackTestClient card = JackTestClient::card("card", 2, 2);
  for (int round = 0; round < 10; ++round) {
    driver_->devices();
    const std::string name = "other" + std::to_string(round);
    JackTestClient other = JackTestClient::card(name, 1, 1);
    other.activate();
    EXPECT_TRUE(isListedWhenTold("jack:" + name, true));
  }
}

TEST_F(JackChanges, AnOrdinaryProgramsPortsAreNotTold) {
  startServer();
  observe();
  settle();
  JackTestClient ear = JackTestClient::ear("ear", 2);
  ear.activate();
  JackTestClient card = JackTestClient::card("card", 1, 0);
  card.activate();
  // One port, one report. Any report of the ear's ports would have come earlier.
  EXPECT_TRUE(hears());
  EXPECT_EQ(observer_.told(), known_ + 1);
}

TEST_F(JackChanges, AnotherBufferSizeIsTold) {
  startServer(256);
  observe();
  settle();
  JackTestClient other = JackTestClient::ear("other", 1);
  other.activate();
  other.setBufferSize(512);
  EXPECT_TRUE(hears());
  EXPECT_TRUE(eventually([this] { return device("system").bufferFrames == 512U; }));
}

TEST_F(JackChanges, AServerThatComesDiesAndComesBackIsTold) {
  driver_->setObserver(observer_);
  for (int round = 0; round < 3; ++round) {
    startServer();
    EXPECT_TRUE(isListedWhenTold("jack:system", true)) << round;
    settle();
    server_->kill();
    EXPECT_TRUE(noneIsListedWhenTold()) << round;
    settle();
    server_.reset();
  }
}

TEST_F(JackChanges, TheServerEndsWhenItsUserEndsIt) {
  driver_->setObserver(observer_);
  for (int round = 0; round < 3; ++round) {
    startServer();
    ASSERT_TRUE(isListedWhenTold("jack:system", true)) << round;
    settle();
    server_->terminate();
    EXPECT_TRUE(noneIsListedWhenTold()) << round;
    settle();
    server_.reset();
  }
}

TEST_F(JackChanges, NothingIsToldAfterTheDriver) {
  startServer();
  observe();
  driver_.reset();
  const int told = observer_.told();
  JackTestClient card = JackTestClient::card("card", 1, 1);
  card.activate();
  EXPECT_EQ(observer_.told(), told);
  driver_ = hal::makeJackDriver();
  EXPECT_EQ(device("card").inputStreams.size(), 1U);
  EXPECT_EQ(observer_.told(), told);
}

TEST_F(JackChanges, AHungServerDoesNotHoldTheEndUp) {
  startServer();
  observe();
  server_->pause();
  EXPECT_TRUE(endsWithin(400ms, [this] { driver_.reset(); }));
  server_->kill();
}

}  // namespace
}  // namespace tolvane::test
