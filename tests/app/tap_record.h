// What the end-to-end tests see of the program's device and window, in a file that both processes map.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tolvane::test {

inline constexpr std::size_t kTapChannels = 20;

struct TapChannel {
  std::atomic<float> peak;  // of the last cycle
  // Over the whole run, in one number so that both are of one moment: the frames in the upper 32 bits, and
  // how often the signal went from below zero to zero or above in the lower.
  std::atomic<std::uint64_t> framesAndCrossings;
};

struct TapRecord {
  std::atomic<std::uint64_t> cycles;
  std::atomic<std::uint64_t> frames;
  std::array<TapChannel, kTapChannels> channels;
  // The window's thread counts here every few milliseconds. Between two counts it notes how long it slept,
  // which is not how long it ran or waited for a processor; the longest stands here until someone stores 0.
  std::atomic<std::uint64_t> heartbeats;
  std::atomic<std::uint32_t> longestSleepMs;
};

static_assert(std::atomic<float>::is_always_lock_free && std::atomic<std::uint64_t>::is_always_lock_free);

}  // namespace tolvane::test
