// Somebody disconnects our ports from the device's while both stay, as with a patch bay.
#include <atomic>
#include <thread>

#include "hal/jack/jack_fixture.h"
#include "hal/jack/jack_library.h"
#include "hal/jack/jack_stream.h"

namespace tolvane::test {
namespace {

using hal::RemovedLinks;

class JackRemovedLink : public JackFixture {
 protected:
  JackRemovedLink() {
    startServer();
    card_.reset(new JackTestClient(JackTestClient::card("card", 2, 2)));
    card_->activate();
    session_ = start("card", client_);
  }

  [[nodiscard]] bool isReported(const RemovedLinks& removed) const {
    return eventually([&] { return client_.removed() == removed; });
  }

  JackSessionClient client_{2, 2, straightRoutes(2)};
  std::unique_ptr<JackTestClient> card_;
  std::unique_ptr<hal::Session> session_;
};

TEST_F(JackRemovedLink, StaysRemovedAndIsReportedOnce) {
  card_->disconnect("card:capture_2", "Tolvane:in_2");
  EXPECT_TRUE(isReported({{1}, {}}));
  card_->disconnect("Tolvane:out_1", "card:playback_1");
  EXPECT_TRUE(isReported({{1}, {0}}));
  const std::uint64_t before = client_.cycles;
  EXPECT_TRUE(eventually([&] { return client_.cycles > before + 50; }));
  EXPECT_EQ(client_.removals, 2);
  EXPECT_TRUE(client_.alive);
  EXPECT_TRUE(card_->connectionsOf("card:capture_2").empty());
  EXPECT_TRUE(card_->connectionsOf("card:playback_1").empty());
  EXPECT_EQ(card_->connectionsOf("card:capture_1"), std::vector<std::string>{"Tolvane:in_1"});
}

TEST_F(JackRemovedLink, ComesBackWithTheNextStart) {
  card_->disconnect("card:capture_2", "Tolvane:in_2");
  ASSERT_TRUE(isReported({{1}, {}}));
  session_.reset();
  session_ = start("card", client_);
  card_->expectConnections("card:capture_2", {"Tolvane:in_2"});
  EXPECT_EQ(client_.removals, 1);
}

// The server tells of the removal at once, but its list of connections changes only after a finished cycle.
TEST_F(JackRemovedLink, IsReportedWhileACycleStandsStill) {
  std::atomic<bool> isStill{false};
  std::atomic<bool> stopsAsked{false};
  JackTestClient slow("slow", 1, 0, 0);
  slow.setSignal([&](std::size_t, std::uint64_t) {
    if (!stopsAsked.exchange(false)) return 0.0F;
    isStill = true;
    std::this_thread::sleep_for(300ms);
    return 0.0F;
  });
  slow.activate();
  stopsAsked = true;
  ASSERT_TRUE(eventually([&] { return isStill.load(); }));
  card_->disconnect("card:capture_2", "Tolvane:in_2");
  EXPECT_TRUE(isReported({{1}, {}}));
}

TEST_F(JackRemovedLink, IsNotRemovedOnceSomebodyHasMadeItAgain) {
  card_->disconnect("card:capture_2", "Tolvane:in_2");
  ASSERT_TRUE(isReported({{1}, {}}));
  card_->connect("card:capture_2", "Tolvane:in_2");
  EXPECT_TRUE(isReported({{}, {}}));
}

TEST_F(JackRemovedLink, IsNotReportedWhereThePortHasGone) {
  card_.reset();
  EXPECT_TRUE(eventually([this] { return !client_.alive; }));
  EXPECT_EQ(client_.removals, 0);
}

std::atomic<int> looks{0};

// Between the driver's answer and the session, milliseconds may pass.
TEST_F(JackRemovedLink, IsReportedIfItWasRemovedBeforeTheSessionIsOpen) {
  session_.reset();
  hal::JackLibrary library = *hal::JackLibrary::get();
  library.getUuidForClientName = [](jack_client_t* client, const char* name) {
    ++looks;
    return hal::JackLibrary::get()->getUuidForClientName(client, name);
  };
  hal::JackStream stream(library, device("card"), client_);
  ASSERT_EQ(stream.enter(), noErr);
  std::thread host([&] { stream.awaitEnd(); });
  const int before = looks;
  card_->disconnect("card:capture_2", "Tolvane:in_2");
  EXPECT_TRUE(eventually([&] { return looks > before; }));
  std::this_thread::sleep_for(50ms);  // for the look to end
  EXPECT_EQ(client_.removals, 0);
  stream.open();
  EXPECT_TRUE(isReported({{1}, {}}));
  stream.requestEnd();
  host.join();
  stream.leave();
}

TEST_F(JackRemovedLink, OfOtherClientsIsNotReported) {
  JackTestClient ear = JackTestClient::ear("ear", 1);
  ear.activate();
  ear.listen(0, "card:capture_1");
  ear.disconnect("card:capture_1", "ear:playback_1");
  card_->disconnect("card:capture_2", "Tolvane:in_2");
  EXPECT_TRUE(isReported({{1}, {}}));
  EXPECT_EQ(client_.removals, 1);
}

}  // namespace
}  // namespace tolvane::test
