// Links that carry audio, as the server says, while nothing comes through them.
#include <chrono>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "hal/pipewire/library.h"
#include "hal/pipewire/link_set.h"
#include "hal/pipewire/patch_rig.h"
#include "hal/pipewire/pipewire_headers.h"
#include "support/eventually.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;
using hal::pipewire::LinkEnd;
using hal::pipewire::LinkSet;

class PipeWireSilentLink : public testing::Test {
 protected:
  ~PipeWireSilentLink() override {
    pw_thread_loop_lock(client_.loop());
    links_.reset();
    pw_thread_loop_unlock(client_.loop());
  }

  /// Asks for the link, as a session does again and again.
  void want(bool isSilent) {
    pw_thread_loop_lock(client_.loop());
    links_->want(client_.core(), 0, from_, to_, isSilent);
    pw_thread_loop_unlock(client_.loop());
  }

  [[nodiscard]] bool isMadeAnew(unsigned linksSoFar) {
    return eventually([&] {
      want(true);
      return client_.linksSoFar() == linksSoFar;
    });
  }

  /// The number of links so far, after a time in which a silent one would have been made anew.
  [[nodiscard]] unsigned linksLater(bool isSilent) {
    for (auto waited = 0ms; waited < 2500ms; waited += 50ms) {
      want(isSilent);
      std::this_thread::sleep_for(50ms);
    }
    return client_.linksSoFar();
  }

  PipeWireServer server_{{kCard}};
  PipeWireClient client_;
  LinkEnd from_{.nodeId = client_.nodeId("card.source"), .port = "capture_AUX0"};
  LinkEnd to_{.nodeId = client_.nodeId("card.sink"), .port = "playback_AUX0"};
  std::optional<LinkSet> links_{std::in_place, *hal::pipewire::library(), 1, [] {}};
};

TEST_F(PipeWireSilentLink, IsMadeAnewThreeTimesAndAgainAfterSomethingHasCome) {
  want(false);
  EXPECT_TRUE(isMadeAnew(4));
  EXPECT_EQ(linksLater(true), 4U);
  want(false);
  EXPECT_TRUE(isMadeAnew(5));
  EXPECT_EQ(client_.linkCount(), 1U);
}

TEST_F(PipeWireSilentLink, OneThatCarriesSomethingStays) {
  EXPECT_EQ(linksLater(false), 1U);
}

}  // namespace
}  // namespace tolvane::test
