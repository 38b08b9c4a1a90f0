// The other end of the loopback card, where the program's inputs are fed and its outputs recorded.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>

#include <alsa/asoundlib.h>

#include "alsa_guest/frame_checker.h"

namespace tolvane::test {

/// Plays the test signal into the card's inputs and checks its outputs, for the bench's lifetime. The bench
/// sets the card's format and channels, which the program then has to take.
class LoopbackBench {
 public:
  LoopbackBench(snd_pcm_format_t format, unsigned channels);
  LoopbackBench(const LoopbackBench&) = delete;
  LoopbackBench& operator=(const LoopbackBench&) = delete;
  ~LoopbackBench();

  /// A copy of the checker with the results so far.
  [[nodiscard]] FrameChecker recorded() const;
  /// How often the bench itself was late.
  [[nodiscard]] unsigned xruns() const { return xruns_; }

 private:
  snd_pcm_t* open(snd_pcm_stream_t stream) const;
  void play();
  void record();

  const snd_pcm_format_t format_;
  const unsigned channels_;
  snd_pcm_t* playback_;
  snd_pcm_t* capture_;
  mutable std::mutex mutex_;
  FrameChecker checker_;  // guarded by mutex_
  std::atomic<unsigned> xruns_{0};
  std::atomic<bool> stop_{false};
  std::thread player_;
  std::thread recorder_;
};

}  // namespace tolvane::test
