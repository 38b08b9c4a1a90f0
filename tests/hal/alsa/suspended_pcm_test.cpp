// Which libasound calls bring back a card after the machine was suspended, and in which order.
#include <atomic>
#include <cerrno>
#include <mutex>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hal/alsa/alsa_session.h"
#include "hal/alsa/one_card.h"
#include "support/eventually.h"

namespace tolvane::hal::alsa {
namespace {

std::atomic<bool> isSuspended{false};
std::mutex callsMutex;
std::vector<std::string> calls;  // guarded by callsMutex

void note(const char* call) {
  const std::lock_guard lock(callsMutex);
  calls.emplace_back(call);
}

std::vector<std::string> callsSoFar() {
  const std::lock_guard lock(callsMutex);
  return calls;
}

/// libasound, except that the PCM is suspended when the test says so, until it is resumed or dropped.
Library suspendingLibrary() {
  Library alsa = *library();
  alsa.snd_pcm_state = [](snd_pcm_t* pcm) {
    return isSuspended ? SND_PCM_STATE_SUSPENDED : library()->snd_pcm_state(pcm);
  };
  alsa.snd_pcm_avail_update = [](snd_pcm_t* pcm) {
    return isSuspended ? snd_pcm_sframes_t{-ESTRPIPE} : library()->snd_pcm_avail_update(pcm);
  };
  alsa.snd_pcm_resume = [](snd_pcm_t* /*pcm*/) {
    note("resume");
    isSuspended = false;
    return 0;
  };
  alsa.snd_pcm_drop = [](snd_pcm_t* pcm) {
    note("drop");
    isSuspended = false;
    return library()->snd_pcm_drop(pcm);
  };
  alsa.snd_pcm_prepare = [](snd_pcm_t* pcm) {
    note("prepare");
    return library()->snd_pcm_prepare(pcm);
  };
  alsa.snd_pcm_start = [](snd_pcm_t* pcm) {
    note("start");
    return library()->snd_pcm_start(pcm);
  };
  return alsa;
}

TEST(SuspendedPcm, IsResumedBeforeItIsDropped) {
  const Library alsa = suspendingLibrary();
  std::unique_ptr<Duplex> duplex;
  ASSERT_EQ(Duplex::open(alsa, {"null", ""}, duplex), 0);
  ASSERT_EQ(duplex->configure({2, 0, {}}), 0);
  test::DeafClient client;
  {
    const AlsaSession session(std::move(duplex), nullptr, client, [] {});
    ASSERT_TRUE(test::eventually([&] { return client.cycles > 0; }));
    isSuspended = true;
    ASSERT_TRUE(test::eventually([&] { return client.overloads > 0; }));
    const int cycles = client.cycles;
    EXPECT_TRUE(test::eventually([&] { return client.cycles > cycles; }));
  }
  EXPECT_THAT(callsSoFar(),
              testing::ElementsAre("prepare", "start", "resume", "drop", "prepare", "start", "drop"));
  EXPECT_EQ(client.overloads, 1);
  EXPECT_TRUE(client.alive);
}

}  // namespace
}  // namespace tolvane::hal::alsa
