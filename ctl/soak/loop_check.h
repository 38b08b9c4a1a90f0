// The comparison of what a device returns with what it was sent.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "ctl/soak/channels.h"

namespace tolvane::ctl {

/// Finds the inputs at which outputs come back, by a cable or a digital loop that changes no bit, and then
/// compares every sample of them.
class LoopCheck {
 public:
  /// Loops from outputs beyond this number are not looked for.
  static constexpr std::size_t kMostOutputs = 64;

  /// Makes all memory. [not-io]
  LoopCheck(std::size_t inputs, std::size_t outputs);

  /// Looks for loops while on. Meanwhile output n must carry the soak's signal of channel n, and nothing
  /// else. [main-thread]
  void search(bool on) noexcept { isSearching_.store(on, std::memory_order_release); }

  /// One cycle, whose first frame is the run's frame `first`: compares the inputs, then keeps the outputs.
  /// Wait-free. [io-thread]
  void cycle(std::uint64_t first, std::size_t frames, std::span<const ChannelSamples> inputs,
             std::span<const ChannelSamples> outputs) noexcept;

  // [any-thread]
  [[nodiscard]] std::uint64_t loops() const noexcept { return loops_.load(std::memory_order_relaxed); }
  [[nodiscard]] std::uint64_t right() const noexcept { return right_.load(std::memory_order_relaxed); }
  /// Samples that were never sent there.
  [[nodiscard]] std::uint64_t wrong() const noexcept { return wrong_.load(std::memory_order_relaxed); }
  /// Silence instead of what was sent, and what a break left out or repeated.
  [[nodiscard]] std::uint64_t missing() const noexcept { return missing_.load(std::memory_order_relaxed); }
  /// How often the delay of a loop changed.
  [[nodiscard]] std::uint64_t breaks() const noexcept { return breaks_.load(std::memory_order_relaxed); }
  /// The longest delay of a loop, in frames.
  [[nodiscard]] std::uint64_t delayFrames() const noexcept {
    return delayFrames_.load(std::memory_order_relaxed);
  }

 private:
  struct Loop {
    std::size_t output;
    std::uint64_t delay;  // frames from the sample's sending to its return
  };

  [[nodiscard]] float sent(std::size_t output, std::uint64_t frame) const noexcept {
    return history_[output * kHistoryFrames + frame % kHistoryFrames];
  }
  [[nodiscard]] bool isSame(const Loop& loop, std::uint64_t first, std::size_t frames,
                            const ChannelSamples& input) const noexcept;
  [[nodiscard]] std::optional<Loop> find(std::uint64_t first, std::size_t frames,
                                         const ChannelSamples& input) const noexcept;
  [[nodiscard]] std::optional<std::uint64_t> newDelay(std::size_t output, std::uint64_t first,
                                                      std::size_t frames,
                                                      const ChannelSamples& input) const noexcept;
  void compare(Loop& loop, std::uint64_t first, std::size_t frames, const ChannelSamples& input) noexcept;
  void keep(std::uint64_t first, std::size_t frames, std::span<const ChannelSamples> outputs) noexcept;
  static void add(std::atomic<std::uint64_t>& count, std::uint64_t more) noexcept {
    count.store(count.load(std::memory_order_relaxed) + more, std::memory_order_relaxed);
  }

  static constexpr std::uint64_t kHistoryFrames = std::uint64_t{1} << 16;
  static constexpr std::uint64_t kLongestDelay = kHistoryFrames / 2;

  const std::size_t outputs_;
  std::vector<std::optional<Loop>> loopOf_;  // by input
  std::vector<float> history_;               // of each output, a ring
  std::atomic<bool> isSearching_{false};
  std::atomic<std::uint64_t> loops_{0};
  std::atomic<std::uint64_t> right_{0};
  std::atomic<std::uint64_t> wrong_{0};
  std::atomic<std::uint64_t> missing_{0};
  std::atomic<std::uint64_t> breaks_{0};
  std::atomic<std::uint64_t> delayFrames_{0};
};

}  // namespace tolvane::ctl
