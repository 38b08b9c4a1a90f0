// The session manager suspends nodes that nobody uses.
#include <nlohmann/json.hpp>

#include "session/session_fixture.h"

namespace tolvane::test {
namespace {

/// What the server says of the node's state, as pw-dump prints it.
std::string stateOf(const std::string& node, const std::string& scratchFile) {
  EXPECT_EQ(runShell("pw-dump >" + scratchFile), 0);
  for (const auto& object : nlohmann::json::parse(readBytes(scratchFile))) {
    if (object.value("type", "") != "PipeWire:Interface:Node") continue;
    const auto& info = object.at("info");
    if (info.at("props").value("node.name", "") == node) return info.value("state", "");
  }
  return "";
}

TEST_F(SessionTest, AStartWakesACardThatIsSuspended) {
  rig_.reset();
  for (const char* node : {"card.source", "card.sink"}) {
    EXPECT_TRUE(ChildProcess::waitUntil([&] { return stateOf(node, folder_ / "dump") == "suspended"; }))
        << node;
  }
  program_.emplace(runArguments());
  for (const char* node : {"card.source", "card.sink"}) {
    EXPECT_TRUE(ChildProcess::waitUntil([&] { return stateOf(node, folder_ / "dump") == "running"; }))
        << node;
  }
  rig_.emplace(kCard, routes_);
  EXPECT_TRUE(rig_->settleInSession());
  EXPECT_EQ(messages(), "tolvanectl: routing on card\n");
}

}  // namespace
}  // namespace tolvane::test
