// A session with a card, and tolvanectl routing on it.
#pragma once

#include <chrono>
#include <iostream>
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
#include "support/stall_watch.h"

namespace tolvane::test {

/// The cards' clock waits for all nodes, unless the test says otherwise. So the right samples come in the
/// right cycles, but a cycle during which links are made may take three seconds.
class SessionTest : public testing::Test {
 protected:
  explicit SessionTest(PipeWirePace pace = PipeWirePace::patient)
      : timing_(pace == PipeWirePace::patient ? PatchRig::Timing::exact : PatchRig::Timing::any),
        session_({kCard, other_}, pace) {
    writePatch(patch_, routes_);
  }

  [[nodiscard]] std::vector<std::string> runArguments() const {
    return {"run", "--patch", patch_, "--device", "card", "--wait", "30"};
  }

  /// Waits until the whole patch is heard.
  void route() {
    program_.emplace(runArguments());
    EXPECT_TRUE(rig_->settleInSession(timing_));
  }

  /// Expects the whole patch to be heard after `link`, which makes the rig's links. Prints and records how
  /// long both take after `event`, with the tenth of a second that the rig listens for.
  template <class Link>
  void expectHeardAgain(const std::string& event, const Link& link) {
    const StallWatch stalls;
    const auto took = timeOf([&] {
      link();
      EXPECT_TRUE(rig_->settleInSession(timing_));
    });
    report("heard again", event, took, stalls);
  }

  /// Expects the program to say `message` for the time of this number. Prints and records how long it takes.
  void expectSaid(const std::string& message, int number, const std::string& event) {
    const StallWatch stalls;
    const auto took = timeOf([&] {
      EXPECT_TRUE(ChildProcess::waitUntil([&] { return countOf(message, program_->err()) >= number; }))
          << program_->err();
    });
    report("said so", event, took, stalls);
  }

  /// Ends the program and returns its messages.
  std::string messages() {
    program_->send(SIGINT);
    const Finished finished = program_->finish();
    EXPECT_EQ(finished.status, 0);
    return finished.err;
  }

  static constexpr const char* kGone = "tolvanectl: card: is gone; waiting for it to come back\n";
  static constexpr const char* kBack = "tolvanectl: card: is back\n";

  const PatchRig::Timing timing_;
  const PipeWireCard other_{.name = "other", .inputs = 2, .outputs = 2, .cardId = 901};
  TemporaryFolder folder_;
  std::string patch_ = folder_ / "patch.json";
  std::vector<PatchConnection> routes_ = straightThrough(4);
  DesktopSession session_;
  std::optional<PatchRig> rig_{std::in_place, kCard, routes_};
  std::optional<ChildProcess> program_;

 private:
  static int countOf(const std::string& part, const std::string& text) {
    int count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
    return count;
  }

  void report(const std::string& what, const std::string& event, std::chrono::steady_clock::duration took,
              const StallWatch& stalls) {
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(took).count();
    std::cout << what << ' ' << ms << " ms after " << event << ", the machine standing still for "
              << stalls.stalled().count() << " ms\n";
    RecordProperty("report" + std::to_string(++reports_),
                   what + " after " + event + ": " + std::to_string(ms) + " ms");
  }

  int reports_ = 0;
};

/// What goes and returns: with a patient clock for exact cycles, and in real time for how long it takes.
class SessionReturn : public SessionTest, public testing::WithParamInterface<PipeWirePace> {
 protected:
  SessionReturn() : SessionTest(GetParam()) {}
};

inline const auto kSessionPaces = testing::Values(PipeWirePace::patient, PipeWirePace::realTime);

inline std::string sessionPaceName(const testing::TestParamInfo<PipeWirePace>& pace) {
  return pace.param == PipeWirePace::patient ? "Patient" : "RealTime";
}

}  // namespace tolvane::test
