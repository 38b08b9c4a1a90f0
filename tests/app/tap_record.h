// What the end-to-end test sees of the device's outputs, in a file that both processes map.
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
};

static_assert(std::atomic<float>::is_always_lock_free && std::atomic<std::uint64_t>::is_always_lock_free);

}  // namespace tolvane::test
