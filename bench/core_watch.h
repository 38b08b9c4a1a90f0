// Tells whether something else runs on the same physical core. That may be another processor of the machine,
// as a second thread of the core, or another guest of the host. Such a neighbour takes up to half of the
// core's computing but less of its copying. So it changes a ratio of the two.
#pragma once

namespace tolvane::bench {

/// Watches the calling thread's core by its rate of independent additions. The lower the rate, the busier the
/// neighbour.
class CoreWatch {
 public:
  /// Takes half a second, to see the core at its fastest.
  CoreWatch();

  /// Whether the rate is close to the highest seen so far. Takes a few microseconds.
  [[nodiscard]] bool isAlone();

 private:
  double fastest_ = 0.0;
};

}  // namespace tolvane::bench
