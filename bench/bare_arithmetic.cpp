#include "bench/bare_arithmetic.h"

namespace tolvane::bench {

namespace {

constexpr float kBareGain = 0.5F;

#if defined(__x86_64__) && !defined(__clang__)
#define TOLVANE_WIDEST_VECTORS [[gnu::target_clones("avx512f", "avx2", "default")]]
#else
#define TOLVANE_WIDEST_VECTORS
#endif

TOLVANE_WIDEST_VECTORS void addRow(const float* __restrict from, float* __restrict to) {
  for (std::size_t f = 0; f < BareArithmetic::kFrames; ++f) to[f] += from[f] * kBareGain;
}

}  // namespace

BareArithmetic::BareArithmetic(std::size_t inputs, std::size_t outputs, std::size_t routes)
    : inputs_(inputs), outputs_(outputs), routes_(routes) {}

void BareArithmetic::run() {
  for (std::size_t r = 0; r < routes_; ++r) {
    addRow(inputs_[r % inputs_.size()].samples, outputs_[r % outputs_.size()].samples);
  }
}

}  // namespace tolvane::bench
