// What a user would write instead of the routing, on the same device and routes.
#pragma once

#include <span>

#include "bench/bench_device.h"
#include "core/patch/patch_connection.h"

namespace tolvane::bench {

/// Clears every output, then calls cblas_saxpy once per route, on one thread.
void clearAndSaxpy(BenchDevice& device, std::span<const PatchConnection> routes);

/// Clears every output, then runs one plain loop over the frames per route.
void clearAndLoop(BenchDevice& device, std::span<const PatchConnection> routes);

/// Copies the whole input and the whole output to other buffers. Reads every byte of both once.
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
