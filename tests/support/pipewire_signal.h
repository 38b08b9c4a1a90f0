// A test signal whose every sample encodes its channel and its frame, exact in a float. Its sender and its
// receiver are nodes in a private server's graph, so they know in which cycle a sample is sent and received.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/pipewire_client.h"

struct pw_filter;
struct spa_io_position;

namespace tolvane::test {

/// Sends channel n of the signal from its port n.
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

/// Counts of what one port received since the last reset. Every frame is right, missing or wrong.
struct ReceivedSignal {
  std::uint64_t frames = 0;         // in total
  std::uint64_t rightFrames = 0;    // the expected channel, or expected silence
  std::uint64_t missingFrames = 0;  // silence instead of the expected channel
  std::uint64_t wrongFrames = 0;    // another channel, or a sample that the feeder never sent
  std::int64_t minDelayFrames = 0;  // of the right frames, relative to the cycle in which they arrived
  std::int64_t maxDelayFrames = 0;
};

/// Compares what its ports receive with the channel that each must carry; -1 is silence.
class SignalRecorder {
 public:
  SignalRecorder(PipeWireClient& client, const std::string& nodeName, const std::vector<int>& channels);
  ~SignalRecorder();
  SignalRecorder(const SignalRecorder&) = delete;
  SignalRecorder& operator=(const SignalRecorder&) = delete;

  /// Restarts the counts at zero from the next cycle on.
  void reset();

  /// The counts after a whole cycle.
  [[nodiscard]] std::vector<ReceivedSignal> received() const;

  /// The frames of the last cycle; 0 before the first.
  [[nodiscard]] std::uint64_t lastCycleFrames() const;

  struct State;

 private:
  std::unique_ptr<State> state_;
};

}  // namespace tolvane::test
