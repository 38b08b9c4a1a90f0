// What the end-to-end tests see of the program's device and window, in a file that both processes map.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tolvane::test {

inline constexpr std::size_t kTapChannels = 20;

struct TapChannel {
  std::atomic<float> peak;               // of the last cycle
  std::atomic<std::uint32_t> crossings;  // from below zero to zero or above, over the whole run
};

struct TapRecord {
  std::atomic<std::uint64_t> cycles;
  std::atomic<std::uint64_t> frames;
  std::array<TapChannel, kTapChannels> channels;
  // The window's thread counts here every few milliseconds, and notes the longest time between two counts;
  // whoever stores 0 there begins anew.
  std::atomic<std::uint64_t> heartbeats;
  std::atomic<std::uint32_t> longestSilenceMs;
};

static_assert(std::atomic<float>::is_always_lock_free && std::atomic<std::uint64_t>::is_always_lock_free);

}  // namespace tolvane::test
