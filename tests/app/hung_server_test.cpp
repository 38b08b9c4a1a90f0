// The window keeps working while a sound server hangs.
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "app/end_to_end_fixture.h"
#include "support/eventually.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

// Listing devices and removing a server's device wait at most one second.
constexpr std::uint32_t kLongestSleepMs = 1000 + kStallMs;

class HungServerTest : public EndToEndTest {
 protected:
  HungServerTest() { session.lookForServersIn(std::getenv("XDG_RUNTIME_DIR")); }

  /// The longest sleep of the window since the last call. Waits until the window works again.
  std::uint32_t takeSleepMs() {
    const std::uint64_t beats = tap->heartbeats;
    EXPECT_TRUE(waitFor([&] { return tap->heartbeats > beats + 20; }));
    return tap->longestSleepMs.exchange(0);
  }

  /// Starts the engine on the server's device. On a slow machine the list may have only the built-in device,
  /// or the start may fail. Then both are repeated.
  void startOnTheCard() {
    for (int attempt = 1; attempt <= 100; ++attempt) {
      click(kStart);
      ASSERT_TRUE(waitFor([&] { return startOutcomes() == attempt; })) << standardOutput.toStdString();
      const bool isOnCard = traceLines("[Engine] id=").back().ends_with("in=4 out=4");
      if (isOnCard && traceLines("[Engine]").back().starts_with("[Engine] Running")) return;
      click(kRefresh);
    }
    FAIL() << "the server's device does not come";
  }

  PipeWireServer server{{{.name = "card", .inputs = 4, .outputs = 4, .cardId = 900}}};
};

TEST_F(HungServerTest, TheListIsReadAndTheMatrixWorkedWhileItHangs) {
  takeSleepMs();
  server.hang();
  for (int round = 0; round < 3; ++round) {
    click(kRefresh);
    EXPECT_LE(takeSleepMs(), kLongestSleepMs);
  }
  // Only the built-in device is left.
  click(cell(3, 5));
  click(kStart);
  EXPECT_TRUE(waitForOutputs({6}));
  EXPECT_LE(takeSleepMs(), kLongestSleepMs);
  server.unhang();
  closeAndWaitForTheEnd();
}

TEST_F(HungServerTest, ADeviceThatRunsOnItIsStoppedAndLeft) {
  ASSERT_NO_FATAL_FAILURE(startOnTheCard());
  takeSleepMs();
  server.hang();
  click(kStart);
  EXPECT_LE(takeSleepMs(), kLongestSleepMs);
  click(kRefresh);
  EXPECT_LE(takeSleepMs(), kLongestSleepMs);
  click(cell(3, 5));
  click(kStart);
  EXPECT_TRUE(waitForOutputs({6})) << "the built-in device is to be heard";
  closeAndWaitForTheEnd();
}

TEST_F(HungServerTest, ClosingTheWindowEndsTheProgramWhileADeviceRunsOnIt) {
  ASSERT_NO_FATAL_FAILURE(startOnTheCard());
  server.hang();
  closeAndWaitForTheEnd();
}

/// Number of the private server's sockets: the listening one and its ends of connections.
long serverSockets() {
  std::ifstream sockets("/proc/self/net/unix");
  const std::string file = std::string(std::getenv("XDG_RUNTIME_DIR")) + "/pipewire-0";
  long count = 0;
  for (std::string line; std::getline(sockets, line);) count += line.ends_with(file) ? 1 : 0;
  return count;
}

/// Starts the program while the server is silent. The server answers some time after the program has
/// connected.
class LateServerTest : public EndToEndTest {
 protected:
  LateServerTest() { session.lookForServersIn(std::getenv("XDG_RUNTIME_DIR")); }
  void SetUp() override {
    PipeWireClient().roundTrip();  // waits until the server has made the card
    server.hang();
    std::thread answering([this, before = serverSockets()] {
      EXPECT_TRUE(waitFor([&] { return serverSockets() > before; }));
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      server.unhang();
    });
    EndToEndTest::SetUp();
    answering.join();
  }

  PipeWireServer server{{{.name = "card", .inputs = 4, .outputs = 4, .cardId = 900}}};
};

TEST_F(LateServerTest, ItsDeviceIsTheFirstInTheFirstList) {
  click(kStart);
  ASSERT_TRUE(waitFor([this] { return startOutcomes() == 1; }));
  EXPECT_THAT(traceLines("[Engine] id="), testing::ElementsAre(testing::HasSubstr(" in=4 out=4")));
  closeAndWaitForTheEnd();
}

}  // namespace
}  // namespace tolvane::test
