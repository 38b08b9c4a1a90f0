// A signal that names itself: every sample says its channel and the frame it belongs to, exactly. What feeds
// it into a private server's graph and what checks it there are nodes of the graph themselves, so that they
// see the very cycle a sample is in.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/pipewire_client.h"

struct pw_filter;
struct spa_io_position;

namespace tolvane::test {

/// Sends channel n of the signal out of its port n.
class SignalFeeder {
 public:
  SignalFeeder(PipeWireClient& client, const std::string& nodeName, unsigned channels);
  ~SignalFeeder();
  SignalFeeder(const SignalFeeder&) = delete;
  SignalFeeder& operator=(const SignalFeeder&) = delete;

  struct State;

 private:
  std::unique_ptr<State> state_;
};

/// What came in at one port since the last reset. Every frame is one of the right, missing and wrong ones.
struct ReceivedSignal {
  std::uint64_t frames = 0;         // of all cycles
  std::uint64_t rightFrames = 0;    // those of the expected channel, or of silence where that is expected
  std::uint64_t missingFrames = 0;  // silence where a channel is expected
  std::uint64_t wrongFrames = 0;    // another channel, or nothing that the feeder ever sent
  std::int64_t minDelayFrames = 0;  // of the right ones, against the cycle that they came in
  std::int64_t maxDelayFrames = 0;
};

/// Checks what comes in at its ports against the channel that each is to carry; -1 is silence.
class SignalRecorder {
 public:
  SignalRecorder(PipeWireClient& client, const std::string& nodeName, const std::vector<int>& channels);
  ~SignalRecorder();
  SignalRecorder(const SignalRecorder&) = delete;
  SignalRecorder& operator=(const SignalRecorder&) = delete;

  /// Counts from zero again from the next cycle on.
  void reset();

  /// As it stands after a whole cycle.
  [[nodiscard]] std::vector<ReceivedSignal> received() const;

  /// The frames of the last cycle; 0 before the first.
  [[nodiscard]] std::uint64_t lastCycleFrames() const;

  struct State;

 private:
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::test
