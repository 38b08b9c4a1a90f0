#pragma once

#include <cstddef>

namespace tolvane::test {

/// Memory behind which nothing can be read or written.
class GuardedMemory {
 public:
  /// Room for so many floats. Ends the process when the system has none.
  explicit GuardedMemory(std::size_t floats);
  ~GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  /// The last `floats` of it: the byte behind them cannot be touched.
  [[nodiscard]] float* last(std::size_t floats) const { return end_ - floats; }

 private:
  void* begin_;
  std::size_t bytes_;
  float* end_;
};

}  // namespace tolvane::test
