// Tells whether something else runs on the same physical core: another processor of the machine that is a
// second thread of it, or another guest of the host that is. Such a neighbour takes up to half of what the
// core computes and less of what it copies, and so changes a ratio of the two.
#pragma once

namespace tolvane::bench {

/// Watches the core that the calling thread runs on, by how many independent additions it does in a
/// nanosecond: the fewer, the more somebody else does there.
class CoreWatch {
 public:
  /// Takes half a second, to see the core at its fastest.
  CoreWatch();

  /// Whether the core does nearly as much as the most that was ever seen. Takes a few microseconds.
  [[nodiscard]] bool isAlone();

 private:
  double fastest_ = 0.0;
};

}  // namespace tolvane::bench
