// tolvanectl where libjack is PipeWire's: only the PipeWire driver is used, and the JACK driver adds no
// client to the graph.
#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using testing::Contains;
using testing::Each;
using testing::Not;
using testing::StartsWith;

class PipeWiresJack : public testing::Test {
 protected:
  PipeWiresJack() { options_.environment["LD_LIBRARY_PATH"] = TOLVANE_PIPEWIRES_JACK_FOLDER; }

  /// The PipeWire driver's node is "tolvane"; a client of the JACK driver would have a name that begins with
  /// "Tolvane".
  void expectNoneOfJacks() { EXPECT_THAT(client_.nodeNamesSoFar(), Each(Not(StartsWith("Tolvane")))); }

  ChildProcess::Options options_;
  PipeWireServer server_{{{.name = "Stays", .inputs = 2, .outputs = 2, .cardId = 76}}};
  PipeWireClient client_;
};

TEST_F(PipeWiresJack, GetsNoClientOfOursWhileTheDevicesAreListedAndFollowed) {
  ChildProcess child({"devices", "--watch"}, options_);
  ASSERT_TRUE(child.waitForOut("Tolvane Virtual Device"));
  EXPECT_THAT(child.out(), testing::ContainsRegex("Stays .* pipewire"));
  for (const std::string name : {"First", "Second", "Third"}) {
    client_.addCard({.name = name, .inputs = 3});
    ASSERT_TRUE(child.waitForOut("  " + name + "  ("));
  }
  child.send(SIGTERM);
  EXPECT_EQ(child.finish().status, 0);
  expectNoneOfJacks();
}

TEST_F(PipeWiresJack, GetsNoClientBesideTheOneThatRoutes) {
  const TemporaryFolder folder;
  writePatch(folder / "patch.json", {{0, 0, 1.0F, true}});
  ChildProcess child({"run", "--patch", folder / "patch.json", "--device", "Stays"}, options_);
  ASSERT_TRUE(child.waitForOut("[IOProc] first call completed OK ✓"));
  child.send(SIGTERM);
  EXPECT_EQ(child.finish().status, 0);
  EXPECT_THAT(client_.nodeNamesSoFar(), Contains("tolvane"));
  expectNoneOfJacks();
}

}  // namespace
}  // namespace tolvane::test
