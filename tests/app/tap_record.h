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
  // Totals of the whole run. The upper 32 bits count frames, the lower 32 bits rising zero crossings (from
  // below zero to zero or above). One number, so both are from the same moment.
  std::atomic<std::uint64_t> framesAndCrossings;
};

struct TapRecord {
  std::atomic<std::uint64_t> cycles;
  std::atomic<std::uint64_t> frames;
  std::array<TapChannel, kTapChannels> channels;
  // The window's thread increments this every few milliseconds. Between two counts it measures how long it
  // slept; the time in which it ran or waited for a processor does not count. The longest sleep stays in
  // longestSleepMs until someone stores 0.
  std::atomic<std::uint64_t> heartbeats;
  std::atomic<std::uint32_t> longestSleepMs;
};

static_assert(std::atomic<float>::is_always_lock_free && std::atomic<std::uint64_t>::is_always_lock_free);

}  // namespace tolvane::test
