#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/routing/mix/mix_kernels.h"
#include "guarded_memory.h"
#include "random_cycle.h"

namespace tolvane::test {

/// Runs random cycles through the routing routine and compares them with the reference order. On a crash,
/// names the cycle on standard error. One instance at a time.
class CycleCheck {
 public:
  CycleCheck();
  ~CycleCheck();
  CycleCheck(const CycleCheck&) = delete;
  CycleCheck& operator=(const CycleCheck&) = delete;

  /// Runs the cycle of a seed in the variant of the mixing loops that is in use. Returns an empty text if all
  /// of its memory is bit for bit as the reference order leaves it, else the difference. All NaNs count as
  /// equal: which of two NaNs comes out of an addition depends on the processor, and on the compiler, which
  /// may swap them.
  std::string differenceOf(std::uint64_t seed);

  /// Runs the maker's cycle in each of these variants of the mixing loops.
  std::string differenceOf(RandomCycleMaker& maker, std::span<const MixKernels* const> variants);

 private:
  std::vector<std::uint64_t> bufferList(const std::vector<RandomBuffer>& buffers, float* memory) const;
  std::string routed(RandomCycle& cycle, float* memory) const;
  [[nodiscard]] std::string differenceAfter(RandomCycle& cycle, const std::vector<float>& before);

  GuardedMemory guarded_;
  std::vector<float> plain_;
};

}  // namespace tolvane::test
