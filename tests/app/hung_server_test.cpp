// A sound server that hangs, and the window that goes on.
#include <cstdlib>

#include "app/end_to_end_fixture.h"
#include "support/eventually.h"
#include "support/pipewire_server.h"

namespace tolvane::test {
namespace {

// A list takes 200 ms at the most; what a busy machine adds to it is not the program's.
constexpr std::uint32_t kLongestSilenceMs = 500;
// What takes a server's device away may take a second.
constexpr std::uint32_t kLongestStopMs = 1500;

class HungServerTest : public EndToEndTest {
 protected:
  HungServerTest() { session.lookForServersIn(std::getenv("XDG_RUNTIME_DIR")); }

  /// The longest time in which the window did nothing since the last call, once it does something again.
  std::uint32_t takeSilenceMs() {
    const std::uint64_t beats = tap->heartbeats;
    EXPECT_TRUE(waitFor([&] { return tap->heartbeats > beats + 20; }));
    return tap->longestSilenceMs.exchange(0);
  }

  PipeWireServer server{{{.name = "card", .inputs = 4, .outputs = 4, .cardId = 900}}};
};

TEST_F(HungServerTest, TheListIsReadAndTheMatrixWorkedWhileItHangs) {
  takeSilenceMs();
  server.hang();
  for (int round = 0; round < 3; ++round) {
    click(kRefresh);
    EXPECT_LE(takeSilenceMs(), kLongestSilenceMs);
  }
  // What is left is the built-in device.
  click(cell(3, 5));
  click(kStart);
  EXPECT_TRUE(waitForOutputs({6}));
  EXPECT_LE(takeSilenceMs(), kLongestSilenceMs);
  server.unhang();
  closeAndWaitForTheEnd();
}

TEST_F(HungServerTest, ADeviceThatRunsOnItIsStoppedAndLeft) {
  click(kStart);
  EXPECT_TRUE(waitFor([this] { return isRunning(); }));
  takeSilenceMs();
  server.hang();
  click(kStart);
  EXPECT_LE(takeSilenceMs(), kLongestStopMs);
  click(kRefresh);
  EXPECT_LE(takeSilenceMs(), kLongestSilenceMs);
  click(cell(3, 5));
  click(kStart);
  EXPECT_TRUE(waitForOutputs({6})) << "the built-in device is to be heard";
  closeAndWaitForTheEnd();
}

TEST_F(HungServerTest, ClosingTheWindowEndsTheProgramWhileADeviceRunsOnIt) {
  click(kStart);
  EXPECT_TRUE(waitFor([this] { return isRunning(); }));
  server.hang();
  closeAndWaitForTheEnd();
}

}  // namespace
}  // namespace tolvane::test
