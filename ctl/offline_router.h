#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/patch_connection.h"
#include "core/routing_context.h"

namespace tolvane::ctl {

/// A device that is not there: sends interleaved blocks through the routing routine of the live engine.
class OfflineRouter {
 public:
  /// Both channel counts are at least 1; at most the first 64 active routes sound. [not-io]
  OfflineRouter(std::span<const PatchConnection> routes, std::int32_t inputChannels,
                std::int32_t outputChannels);

  /// One cycle of `frames` frames: `input` holds frames x inputs samples, `output` receives frames x outputs.
  /// [any-thread, one at a time]
  void route(const float* input, float* output, std::size_t frames) noexcept;

 private:
  IOProcContext context_;
};

}  // namespace tolvane::ctl
