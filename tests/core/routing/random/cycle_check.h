#pragma once

#include <cstdint>
#include <string>
#include <vector>

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

  /// Runs the cycle of a seed. Returns an empty text if all of its memory is bit for bit as the reference
  /// order leaves it, else the difference. All NaNs count as equal: which of two NaNs comes out of an
  /// addition depends on the processor, and on the compiler, which may swap them.
  std::string differenceOf(std::uint64_t seed);

 private:
  std::vector<std::uint64_t> bufferList(const std::vector<RandomBuffer>& buffers, float* memory) const;
  std::string routed(RandomCycle& cycle, float* memory) const;

  GuardedMemory guarded_;
  std::vector<float> plain_;
};

}  // namespace tolvane::test
