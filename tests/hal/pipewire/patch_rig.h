// Devices of a private server with a signal at their inputs and a recorder at their outputs. One wire
// connects signal and recorder directly.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "core/patch/patch_connection.h"
#include "support/eventually.h"
#include "support/pipewire_client.h"
#include "support/pipewire_server.h"
#include "support/pipewire_signal.h"

namespace tolvane::test {

/// The card for tests that need only one.
inline const PipeWireCard kCard{.name = "card", .inputs = 4, .outputs = 4, .cardId = 900};

/// For each output, the input that is routed to it, or -1.
inline std::vector<int> sourcesOf(const std::vector<PatchConnection>& routes, std::size_t outputs) {
  std::vector<int> sources(outputs, -1);
  for (const PatchConnection& route : routes) {
    sources.at(static_cast<std::size_t>(route.outputChannel)) = static_cast<int>(route.inputChannel);
  }
  return sources;
}

/// The number of channels of all cards in one direction.
inline unsigned sumOf(const std::vector<PipeWireCard>& cards, unsigned PipeWireCard::*channels) {
  unsigned sum = 0;
  for (const PipeWireCard& card : cards) sum += card.*channels;
  return sum;
}

/// The graph around some cards on the running server. The channels of signal and recorder are those of the
/// cards, one card after the other. The recorder's last channel is the wire.
class PatchRig {
 public:
  PatchRig(const PipeWireCard& card, const std::vector<PatchConnection>& routes)
      : PatchRig(std::vector<PipeWireCard>{card}, routes) {}

  PatchRig(std::vector<PipeWireCard> cards, const std::vector<PatchConnection>& routes)
      : cards_(std::move(cards)),
        feeder_(client_, "feeder", sumOf(cards_, &PipeWireCard::inputs)),
        recorder_(client_, "recorder", withWire(sourcesOf(routes, sumOf(cards_, &PipeWireCard::outputs)))) {
    client_.link({"feeder", false, 0}, {"recorder", true, sumOf(cards_, &PipeWireCard::outputs)});
    for (std::size_t card = 0; card < cards_.size(); ++card) linkCard(card);
  }

  /// Links the card; call again after its nodes were away.
  void linkCard(std::size_t number) {
    client_.roundTrip();  // this client may still see what somebody else has removed
    const PipeWireCard& card = cards_[number];
    const std::vector<PipeWireCard> before(cards_.begin(),
                                           cards_.begin() + static_cast<std::ptrdiff_t>(number));
    const unsigned firstInput = sumOf(before, &PipeWireCard::inputs);
    const unsigned firstOutput = sumOf(before, &PipeWireCard::outputs);
    for (unsigned n = 0; n < card.inputs; ++n) {
      client_.link({"feeder", false, firstInput + n}, {card.name + ".source", true, n});
    }
    for (unsigned n = 0; n < card.outputs; ++n) {
      client_.link({card.name + ".sink", false, n}, {"recorder", true, firstOutput + n});
    }
  }

  /// When a sample must come.
  enum class Timing {
    exact,  // in the cycle in which it was sent
    any,    // before PipeWire 1.0, whoever is late once on a machine that stalls may stay a cycle late
  };

  [[nodiscard]] PipeWireClient& client() noexcept { return client_; }
  [[nodiscard]] SignalRecorder& recorder() noexcept { return recorder_; }
  [[nodiscard]] const SignalRecorder& recorder() const noexcept { return recorder_; }

  /// Succeeds if there were cycles since the last reset and every sample came right and in time. Else says
  /// which channels were wrong, and how.
  [[nodiscard]] ::testing::AssertionResult isRight(Timing timing = Timing::exact) const {
    const auto received = recorder_.received();
    auto wrong = ::testing::AssertionFailure();
    bool isRight = true;
    for (std::size_t channel = 0; channel < received.size(); ++channel) {
      const ReceivedSignal& signal = received[channel];
      const bool isInTime =
          timing == Timing::any || (signal.minDelayFrames == 0 && signal.maxDelayFrames == 0);
      if (signal.frames != 0 && signal.rightFrames == signal.frames && isInTime) continue;
      isRight = false;
      wrong << "\nchannel " << channel << " of " << received.size() << ": " << signal.frames << " frames, "
            << signal.rightFrames << " right, " << signal.missingFrames << " missing, " << signal.wrongFrames
            << " wrong, delay " << signal.minDelayFrames << " to " << signal.maxDelayFrames;
    }
    return isRight ? ::testing::AssertionSuccess() : wrong;
  }

  /// Waits until only right audio has come for `duration`, then resets the recorder.
  [[nodiscard]] ::testing::AssertionResult settle(
      std::chrono::milliseconds duration = std::chrono::milliseconds(100)) {
    auto settled = ::testing::AssertionFailure();
    eventually([&] {
      recorder_.reset();
      std::this_thread::sleep_for(duration);
      return static_cast<bool>(settled = isRight());
    });
    recorder_.reset();
    return settled;
  }

  /// The same beside a session manager, which may suspend a card under the rig's own links.
  [[nodiscard]] ::testing::AssertionResult settleInSession(Timing timing = Timing::exact) {
    auto settled = ::testing::AssertionFailure();
    eventually([&] {
      recorder_.reset();
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      settled = isRight(timing);
      if (!settled) client_.renewPausedLinks();
      return static_cast<bool>(settled);
    });
    recorder_.reset();
    return settled;
  }

  /// Forces this cycle length on every node. A server from 1.4 on makes all buffers anew and is silent
  /// meanwhile; then this waits until the audio is right again.
  [[nodiscard]] ::testing::AssertionResult changeQuantum(
      std::uint32_t frames, std::chrono::milliseconds settled = std::chrono::milliseconds(100)) {
    client_.setSetting("clock.force-quantum", std::to_string(frames));
    const bool isChanged = eventually([&] { return recorder_.lastCycleFrames() == frames; });
    if (!isChanged)
      return ::testing::AssertionFailure() << "the cycle is still " << recorder_.lastCycleFrames();
    return isSilentAtAQuantumChange() ? settle(settled) : ::testing::AssertionSuccess();
  }

  /// Waits for 80000 more frames, enough to show faults that take time.
  [[nodiscard]] bool waitForMuch() const {
    return waitForFrames(recorder_.received().front().frames + 80000);
  }

  /// Waits until this many frames have come since the last reset.
  [[nodiscard]] bool waitForFrames(std::uint64_t frames) const {
    return eventually([&] { return recorder_.received().front().frames >= frames; });
  }

 private:
  static std::vector<int> withWire(std::vector<int> sources) {
    sources.push_back(0);
    return sources;
  }

  PipeWireClient client_;
  std::vector<PipeWireCard> cards_;
  SignalFeeder feeder_;
  SignalRecorder recorder_;
};

}  // namespace tolvane::test
