#include "bench/core_watch.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace tolvane::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRounds = 4000;
constexpr double kNearly = 0.92;

/// Additions per nanosecond, on as many independent chains as a core adds at once.
double additionsInANanosecond() {
  std::uint64_t a = 0;
  std::uint64_t b = 0;
  std::uint64_t c = 0;
  std::uint64_t d = 0;
  const auto begin = Clock::now();
  for (int round = 0; round < kRounds; ++round) {
#pragma GCC unroll 10
    for (int i = 0; i < 10; ++i) {
      ++a, ++b, ++c, ++d;
      // Keeps the compiler from merging the additions into one.
      __asm__ volatile("" : "+r"(a), "+r"(b), "+r"(c), "+r"(d));
    }
  }
  return kRounds * 40 / std::chrono::duration<double, std::nano>(Clock::now() - begin).count();
}

}  // namespace

CoreWatch::CoreWatch() {
  const auto end = Clock::now() + std::chrono::milliseconds(500);
  while (Clock::now() < end) fastest_ = std::max(fastest_, additionsInANanosecond());
}

bool CoreWatch::isAlone() {
  const double now = additionsInANanosecond();
  fastest_ = std::max(fastest_, now);
  return now >= kNearly * fastest_;
}

}  // namespace tolvane::bench
