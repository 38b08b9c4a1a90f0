// The reference for a cycle: follows the callback's contract step by step, in that order. Every faster way
// must agree with it. It shares no code with core/.
#pragma once

#include <cstddef>
#include <vector>

#include "random_cycle.h"

namespace tolvane::test {

class ReferenceCycle {
 public:
  explicit ReferenceCycle(const RandomCycle& cycle);

  /// How many floats from the start of the memory the cycle may touch: its buffers, and what its routes read
  /// and write beyond them.
  [[nodiscard]] std::size_t floats() const { return floats_; }

  /// Runs the cycle.
  void run(std::vector<float>& memory) const;

 private:
  struct Slot {
    std::optional<std::size_t> place;
    std::size_t stride = 1;
  };
  struct Route {
    Slot in;
    Slot out;
    float gain;
  };

  std::int64_t flatten(const std::vector<RandomBuffer>& list, std::vector<Slot>& slots) const;
  void takeBuffers(const std::vector<RandomBuffer>& list);
  void findFrames();
  void findRoutes(std::int64_t nIn, std::int64_t nOut, const std::vector<Slot>& in,
                  const std::vector<Slot>& out);

  const RandomCycle& cycle_;
  bool clears_ = false;
  std::size_t frames_ = 0;
  std::vector<Route> routes_;  // only those that are heard
  std::size_t floats_ = 0;
};

}  // namespace tolvane::test
