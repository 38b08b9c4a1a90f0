// Two tolvanectl on one device: both play, and the end of one leaves the other alone.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class TwoPrograms : public testing::Test {
 protected:
  TwoPrograms() { writePatch(patch_, {{0, 0, 1.0F, true}}); }

  void expectBothRun(const std::string& device) const {
    const std::vector<std::string> words = {"run", "--patch", patch_, "--device", device};
    ChildProcess one(words);
    ASSERT_TRUE(one.waitForOut("completed OK"));
    ChildProcess other(words);
    ASSERT_TRUE(other.waitForOut("completed OK"));
    for (ChildProcess* const each : {&one, &other}) {
      each->send(SIGINT);
      const Finished run = each->finish();
      EXPECT_EQ(run.status, 0);
      EXPECT_THAT(run.err, Not(HasSubstr("is gone")));
      EXPECT_THAT(run.out, Not(HasSubstr("\ncycles: 0\n")));
    }
  }

  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
};

TEST_F(TwoPrograms, ShareACardOfTheServer) {
  const PipeWireServer server({{.name = "Card", .inputs = 2, .outputs = 2, .cardId = 76}});
  expectBothRun("Card");
}

TEST_F(TwoPrograms, HaveAVirtualDeviceEach) {
  expectBothRun("Tolvane Virtual Device");
}

}  // namespace
}  // namespace tolvane::test
