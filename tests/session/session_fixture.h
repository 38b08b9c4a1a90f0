// A session with a card, and tolvanectl routing on it.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/routing_client.h"
#include "support/desktop_session.h"

namespace tolvane::test {

class SessionTest : public testing::Test {
 protected:
  explicit SessionTest(PipeWirePace pace = PipeWirePace::patient) : session_({kCard, other_}, pace) {
    writePatch(patch_, routes_);
  }

  [[nodiscard]] std::vector<std::string> runArguments() const {
    return {"run", "--patch", patch_, "--device", "card", "--wait", "30"};
  }

  /// Waits until the whole patch is heard.
  void route() {
    program_.emplace(runArguments());
    EXPECT_TRUE(rig_->settleInSession());
  }

  /// Ends the program and returns its messages.
  std::string messages() {
    program_->send(SIGINT);
    const Finished finished = program_->finish();
    EXPECT_EQ(finished.status, 0);
    return finished.err;
  }

  const PipeWireCard other_{.name = "other", .inputs = 2, .outputs = 2, .cardId = 901};
  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
  std::vector<PatchConnection> routes_ = straightThrough(4);
  DesktopSession session_;
  std::optional<PatchRig> rig_{std::in_place, kCard, routes_};
  std::optional<ChildProcess> program_;
};

}  // namespace tolvane::test
