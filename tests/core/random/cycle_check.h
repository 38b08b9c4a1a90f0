#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "guarded_memory.h"
#include "random_cycle.h"

namespace tolvane::test {

/// Runs random cycles through the routing routine and compares them with the plain order. A crash says which
/// cycle it was, on standard error. One at a time.
class CycleCheck {
 public:
  CycleCheck();
  ~CycleCheck();
  CycleCheck(const CycleCheck&) = delete;
  CycleCheck& operator=(const CycleCheck&) = delete;

  /// Runs the cycle of a seed. Empty when all of its memory is as the plain order leaves it, to the bit; else
  /// what is not. Of a NaN it only counts that it is one: which of two goes through an addition is the
  /// processor's affair and the compiler's, who may swap the two.
  std::string differenceOf(std::uint64_t seed);

 private:
  std::vector<std::uint64_t> bufferList(const std::vector<RandomBuffer>& buffers, float* memory) const;
  std::string routed(RandomCycle& cycle, float* memory) const;

  GuardedMemory guarded_;
  std::vector<float> plain_;
};

}  // namespace tolvane::test
