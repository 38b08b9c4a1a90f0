#pragma once

#include <cstddef>

namespace tolvane::test {

/// Memory that is followed by an inaccessible page.
class GuardedMemory {
 public:
  /// Has room for `floats` floats. Ends the process if the system has no memory for them.
  explicit GuardedMemory(std::size_t floats);
  ~GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  /// The last `floats` floats. The byte after them cannot be accessed.
  [[nodiscard]] float* last(std::size_t floats) const { return end_ - floats; }

 private:
  void* begin_;
  std::size_t bytes_;
  float* end_;
};

}  // namespace tolvane::test
