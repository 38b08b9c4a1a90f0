// tolvanectl run under a service manager, while its sound server hangs, ends, or comes late.
#include <chrono>

#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "ctl/support/notify_socket.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;

class RunServiceLoss : public testing::Test {
 protected:
  RunServiceLoss() {
    writePatch(patch_, {{0, 0, 1.0F, true}});
    options_.environment["NOTIFY_SOCKET"] = manager_.address();
    options_.environment["WATCHDOG_USEC"] = "400000";
  }

  [[nodiscard]] std::vector<std::string> words() const {
    return {"run", "--patch", patch_, "--device", "Card", "--wait", "100"};
  }

  bool givesSigns() {
    for (int sign = 0; sign < 5; ++sign) {
      if (!manager_.waitFor("WATCHDOG=1")) return false;
    }
    return true;
  }

  static constexpr const char* kReady = "READY=1\nSTATUS=routing on Card";
  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
  NotifySocket manager_;
  ChildProcess::Options options_;
  PipeWireServer server_{{{.name = "Card", .inputs = 2, .outputs = 2, .cardId = 76}}};
};

TEST_F(RunServiceLoss, GivesNoSignsOfLifeWhileADeviceThatIsThereRunsNoCycles) {
  const ChildProcess child(words(), options_);
  ASSERT_TRUE(manager_.waitFor(kReady)) << child.err();
  ASSERT_TRUE(givesSigns());
  server_.hang();
  // The first seconds may still bring signs for cycles before the hang.
  EXPECT_TRUE(ChildProcess::waitUntil([&] { return manager_.count("WATCHDOG=1", 1s) == 0; }));
  server_.unhang();
  EXPECT_TRUE(givesSigns());
}

TEST_F(RunServiceLoss, StaysAliveWhileTheServerIsGoneAndRoutesOnTheNextOne) {
  const ChildProcess child(words(), options_);
  ASSERT_TRUE(manager_.waitFor(kReady)) << child.err();
  server_.kill();
  EXPECT_TRUE(manager_.waitFor("STATUS=waiting for Card to come back"));
  EXPECT_TRUE(givesSigns());
  server_.start();
  EXPECT_TRUE(manager_.waitFor("STATUS=routing on Card"));
  EXPECT_TRUE(givesSigns()) << child.err();
}

TEST_F(RunServiceLoss, IsReadyOnceADeviceThatComesLateRuns) {
  server_.kill();
  const ChildProcess child(words(), options_);
  ASSERT_TRUE(manager_.waitFor("EXTEND_TIMEOUT_USEC=30000000"));
  EXPECT_EQ(manager_.count(kReady, 500ms), 0);
  server_.start();
  EXPECT_TRUE(manager_.waitFor(kReady)) << child.err();
  EXPECT_TRUE(givesSigns());
}

}  // namespace
}  // namespace tolvane::test
