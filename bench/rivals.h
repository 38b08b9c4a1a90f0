// What a user would write instead of the routing, on the same device and routes.
#pragma once

#include <span>

#include "bench/bench_device.h"
#include "core/patch_connection.h"

namespace tolvane::bench {

/// Clears every output, then one cblas_saxpy a route, on one thread.
void clearAndSaxpy(BenchDevice& device, std::span<const PatchConnection> routes);

/// Clears every output, then one plain loop over the frames a route.
void clearAndLoop(BenchDevice& device, std::span<const PatchConnection> routes);

/// Copies the whole input and the whole output somewhere else: every byte of both is read once.
class CopyOfBoth {
 public:
  explicit CopyOfBoth(BenchDevice& device);
  void copy();

 private:
  void copyAll(BenchStreams& from, BenchStreams& to);

  BenchDevice& device_;
  BenchDevice copy_;
};

}  // namespace tolvane::bench
