// A device of a private server with a signal at its inputs, a recorder at its outputs, and one wire past it.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "core/patch_connection.h"
#include "support/eventually.h"
#include "support/pipewire_client.h"
#include "support/pipewire_server.h"
#include "support/pipewire_signal.h"

namespace tolvane::test {

/// For each of the outputs the one input that is routed to it, or -1.
inline std::vector<int> sourcesOf(const std::vector<PatchConnection>& routes, std::size_t outputs) {
  std::vector<int> sources(outputs, -1);
  for (const PatchConnection& route : routes) {
    sources.at(static_cast<std::size_t>(route.outputChannel)) = static_cast<int>(route.inputChannel);
  }
  return sources;
}

/// The graph around a device, on the server that is there. The recorder's last channel is the wire.
class PatchRig {
 public:
  PatchRig(PipeWireCard card, const std::vector<PatchConnection>& routes)
      : card_(std::move(card)),
        feeder_(client_, "feeder", card_.inputs),
        recorder_(client_, "recorder", withWire(sourcesOf(routes, card_.outputs))) {
    client_.link({"feeder", false, 0}, {"recorder", true, card_.outputs});
    linkInputs();
    linkOutputs();
  }

  /// Again, after the card's nodes have been away.
  void linkInputs() {
    for (unsigned n = 0; n < card_.inputs; ++n) {
      client_.link({"feeder", false, n}, {card_.name + ".source", true, n});
    }
  }
  void linkOutputs() {
    for (unsigned n = 0; n < card_.outputs; ++n) {
      client_.link({card_.name + ".sink", false, n}, {"recorder", true, n});
    }
  }

  [[nodiscard]] PipeWireClient& client() noexcept { return client_; }
  [[nodiscard]] SignalRecorder& recorder() noexcept { return recorder_; }

  /// There have been cycles since the last reset, and every sample in them was the right one in the right
  /// cycle.
  [[nodiscard]] bool isRight() const {
    const auto received = recorder_.received();
    return std::all_of(received.begin(), received.end(), [](const ReceivedSignal& signal) {
      return signal.frames != 0 && signal.rightFrames == signal.frames && signal.minDelayFrames == 0 &&
             signal.maxDelayFrames == 0;
    });
  }

  /// Waits until for a while nothing but the right audio has come, and counts from zero again.
  [[nodiscard]] bool settle() {
    const bool isSettled = eventually([&] {
      recorder_.reset();
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      return isRight();
    });
    recorder_.reset();
    return isSettled;
  }

  /// Waits until as many frames have come since the last reset.
  [[nodiscard]] bool waitForFrames(std::uint64_t frames) const {
    return eventually([&] { return recorder_.received().front().frames >= frames; });
  }

 private:
  static std::vector<int> withWire(std::vector<int> sources) {
    sources.push_back(0);
    return sources;
  }

  PipeWireClient client_;
  PipeWireCard card_;
  SignalFeeder feeder_;
  SignalRecorder recorder_;
};

}  // namespace tolvane::test
