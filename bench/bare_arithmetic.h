#pragma once

#include <cstddef>
#include <vector>

namespace tolvane::bench {

/// The arithmetic of a cycle and nothing else: for each route, one multiplication and one addition per frame,
/// in full vectors, from a row of samples into another. All rows fit in the first-level cache. Nobody has to
/// find the routes, transpose the channels or clear anything.
class BareArithmetic {
 public:
  /// Frames of a row.
  static constexpr std::size_t kFrames = 128;

  /// The n-th route goes from the n-th input row to the n-th output row, and from the first again after the
  /// last.
  BareArithmetic(std::size_t inputs, std::size_t outputs, std::size_t routes);

  void run();

 private:
  // No vector crosses a line of the cache.
  struct alignas(64) Row {
    float samples[kFrames];
  };

  std::vector<Row> inputs_;
  std::vector<Row> outputs_;
  std::size_t routes_;
};

}  // namespace tolvane::bench
