#include "support/pipewire_signal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <optional>
#include <span>

#include "support/pipewire_signal_node.h"

namespace tolvane::test {

namespace {

// A sample is an odd integer below 2^24 divided by 2^24, so it is exact and never zero. The upper bits are
// the channel, the lower ones the frame.
constexpr unsigned kFrameBits = 16;
constexpr std::uint32_t kFrameMask = (1U << kFrameBits) - 1;
constexpr float kScale = 16777216.0F;

float sampleOf(unsigned channel, std::uint64_t frame) {
  const std::uint32_t code = (channel << kFrameBits) | (static_cast<std::uint32_t>(frame) & kFrameMask);
  return static_cast<float>(2 * code + 1) / kScale;
}

struct Decoded {
  unsigned channel;
  std::uint32_t frame;  // the lower bits of the frame's number
};

std::optional<Decoded> decode(float sample) {
  const float scaled = sample * kScale;
  if (!(scaled > 0.0F && scaled < kScale) || scaled != std::floor(scaled)) return std::nullopt;
  const auto number = static_cast<std::uint32_t>(scaled);
  if (number % 2 == 0) return std::nullopt;
  return Decoded{(number / 2) >> kFrameBits, (number / 2) & kFrameMask};
}

/// The delay in frames from the sent to the received frame, negative if the received one is earlier. Only the
/// lower bits of the sent frame are known, so this assumes the nearest match.
std::int64_t delayOf(std::uint32_t sentFrame, std::uint64_t receivedFrame) {
  const auto difference = static_cast<std::uint32_t>(receivedFrame - sentFrame) & kFrameMask;
  return difference > kFrameMask / 2 ? static_cast<std::int64_t>(difference) - kFrameMask - 1
                                     : static_cast<std::int64_t>(difference);
}

}  // namespace

struct SignalFeeder::State {
  std::optional<SignalNode> node;

  static void process(void* /*owner*/, const spa_io_clock& clock, std::span<float* const> buffers) {
    for (unsigned channel = 0; channel < buffers.size(); ++channel) {
      if (buffers[channel] == nullptr) continue;
      for (std::uint64_t i = 0; i < clock.duration; ++i) {
        buffers[channel][i] = sampleOf(channel, clock.position + i);
      }
    }
  }
};

SignalFeeder::SignalFeeder(PipeWireClient& client, const std::string& nodeName, unsigned channels)
    : state_(std::make_unique<State>()) {
  state_->node.emplace(client, nodeName, PW_DIRECTION_OUTPUT, channels, &State::process, state_.get());
}

SignalFeeder::~SignalFeeder() = default;

struct SignalRecorder::State {
  explicit State(const std::vector<int>& expectedChannels)
      : channels(expectedChannels), received(expectedChannels.size()) {}

  std::vector<int> channels;
  // A lock on the graph's thread is acceptable in a test, and gives results of whole cycles.
  mutable std::mutex mutex;
  std::vector<ReceivedSignal> received;
  std::uint64_t lastCycleFrames = 0;
  std::optional<SignalNode> node;

  static void process(void* owner, const spa_io_clock& clock, std::span<float* const> buffers) {
    auto& state = *static_cast<State*>(owner);
    const std::lock_guard lock(state.mutex);
    state.lastCycleFrames = clock.duration;
    for (std::size_t i = 0; i < buffers.size(); ++i) {
      record(state.received[i], state.channels[i], clock, buffers[i]);
    }
  }

  static void record(ReceivedSignal& received, int channel, const spa_io_clock& clock, const float* samples) {
    received.frames += clock.duration;
    for (std::uint64_t i = 0; i < clock.duration; ++i) {
      const float sample = samples != nullptr ? samples[i] : 0.0F;
      recordSample(received, channel, clock.position + i, sample);
    }
  }

  static void recordSample(ReceivedSignal& received, int channel, std::uint64_t frame, float sample) {
    if (sample == 0.0F) {
      ++(channel < 0 ? received.rightFrames : received.missingFrames);
      return;
    }
    const auto decoded = decode(sample);
    if (!decoded || static_cast<int>(decoded->channel) != channel) {
      ++received.wrongFrames;
      return;
    }
    const std::int64_t delay = delayOf(decoded->frame, frame);
    const bool isFirst = received.rightFrames++ == 0;
    received.minDelayFrames = isFirst ? delay : std::min(received.minDelayFrames, delay);
    received.maxDelayFrames = isFirst ? delay : std::max(received.maxDelayFrames, delay);
  }
};

SignalRecorder::SignalRecorder(PipeWireClient& client, const std::string& nodeName,
                               const std::vector<int>& channels)
    : state_(std::make_unique<State>(channels)) {
  state_->node.emplace(client, nodeName, PW_DIRECTION_INPUT, channels.size(), &State::process, state_.get());
}

SignalRecorder::~SignalRecorder() = default;

void SignalRecorder::reset() {
  const std::lock_guard lock(state_->mutex);
  std::fill(state_->received.begin(), state_->received.end(), ReceivedSignal{});
}

std::vector<ReceivedSignal> SignalRecorder::received() const {
  const std::lock_guard lock(state_->mutex);
  return state_->received;
}

std::uint64_t SignalRecorder::lastCycleFrames() const {
  const std::lock_guard lock(state_->mutex);
  return state_->lastCycleFrames;
}

}  // namespace tolvane::test
