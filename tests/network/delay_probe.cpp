#include "network/delay_probe.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <numbers>
#include <span>
#include <stdexcept>

#include "network/tones.h"
#include "support/pipewire_signal_node.h"

namespace tolvane::test {

namespace {

constexpr float kPulse = 0.9F;
// A resampler on the way rings before and after the pulse; what is louder than this is the pulse itself.
constexpr float kHeardPulse = 0.3F;
constexpr std::uint64_t kNanosecondsInASecond = 1'000'000'000;

std::uint64_t timeOfFrame(const spa_io_clock& clock, std::uint64_t frame) {
  return clock.nsec + frame * kNanosecondsInASecond / clock.rate.denom;
}

}  // namespace

// A lock on a graph's thread is acceptable in a test.
struct Player::State {
  enum class Plays { silence, pulse, tones };

  std::mutex mutex;
  std::condition_variable pulsePlayed;
  Plays plays = Plays::silence;
  std::uint64_t pulseTimeNs = 0;
  std::uint64_t frame = 0;  // of the tones
  std::optional<SignalNode> node;

  static void process(void* owner, const spa_io_clock& clock, std::span<float* const> buffers) {
    static_cast<State*>(owner)->play(clock, buffers);
  }

  void play(const spa_io_clock& clock, std::span<float* const> buffers) {
    const std::lock_guard lock(mutex);
    for (std::size_t channel = 0; channel < buffers.size(); ++channel) {
      if (buffers[channel] == nullptr) continue;
      const std::span<float> samples(buffers[channel], clock.duration);
      for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = plays == Plays::tones ? toneSample(static_cast<unsigned>(channel), frame + i) : 0.0F;
      }
      if (plays == Plays::pulse) samples[0] = kPulse;
    }
    frame += clock.duration;
    // Just after a link is made, a port may have no buffer; the pulse then waits for the next cycle.
    const bool isWhole = std::all_of(buffers.begin(), buffers.end(), [](float* b) { return b != nullptr; });
    if (plays != Plays::pulse || !isWhole) return;
    plays = Plays::silence;
    pulseTimeNs = clock.nsec;
    pulsePlayed.notify_all();
  }
};

Player::Player(PipeWireClient& client, const std::string& nodeName, unsigned channels)
    : state_(std::make_unique<State>()) {
  state_->node.emplace(client, nodeName, PW_DIRECTION_OUTPUT, channels, &State::process, state_.get());
}

Player::~Player() = default;

std::uint64_t Player::playPulse() {
  using namespace std::chrono_literals;
  std::unique_lock lock(state_->mutex);
  state_->plays = State::Plays::pulse;
  const auto isPlayed = [this] { return state_->plays != State::Plays::pulse; };
  if (!state_->pulsePlayed.wait_for(lock, 10s, isPlayed)) throw std::runtime_error("the player does not run");
  return state_->pulseTimeNs;
}

void Player::playSilence() {
  const std::lock_guard lock(state_->mutex);
  state_->plays = State::Plays::silence;
}

void Player::playTones() {
  const std::lock_guard lock(state_->mutex);
  state_->plays = State::Plays::tones;
}

struct Listener::State {
  mutable std::mutex mutex;
  float loudest = 0.0F;
  std::uint64_t loudestNs = 0;
  unsigned quietCycles = 0;  // since the loudest sample
  std::optional<SignalNode> node;

  static void process(void* owner, const spa_io_clock& clock, std::span<float* const> buffers) {
    static_cast<State*>(owner)->listen(clock, buffers[0]);
  }

  void listen(const spa_io_clock& clock, const float* samples) {
    const std::lock_guard lock(mutex);
    ++quietCycles;
    if (samples == nullptr) return;
    for (std::uint64_t i = 0; i < clock.duration; ++i) {
      if (std::abs(samples[i]) <= loudest) continue;
      loudest = std::abs(samples[i]);
      loudestNs = timeOfFrame(clock, i);
      quietCycles = 0;
    }
  }
};

Listener::Listener(PipeWireClient& client, const std::string& nodeName) : state_(std::make_unique<State>()) {
  state_->node.emplace(client, nodeName, PW_DIRECTION_INPUT, 1, &State::process, state_.get());
}

Listener::~Listener() = default;

void Listener::reset() {
  const std::lock_guard lock(state_->mutex);
  state_->loudest = 0.0F;
}

std::optional<std::uint64_t> Listener::heardPulse() const {
  const std::lock_guard lock(state_->mutex);
  if (state_->loudest < kHeardPulse || state_->quietCycles < 2) return std::nullopt;
  return state_->loudestNs;
}

}  // namespace tolvane::test
