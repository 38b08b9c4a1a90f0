#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/patch/patch_connection.h"
#include "core/routing/routing_context.h"

namespace tolvane::ctl {

/// Routes interleaved blocks without a device, with the routine that the live engine uses.
class OfflineRouter {
 public:
  /// Both channel counts must be at least 1. [not-io]
  OfflineRouter(std::span<const PatchConnection> routes, std::int32_t inputChannels,
                std::int32_t outputChannels);

  /// Routes one cycle of `frames` frames. `input` holds frames x input channels samples, `output` receives
  /// frames x output channels. [any-thread, one call at a time]
  void route(const float* input, float* output, std::size_t frames) noexcept;

 private:
  IOProcContext context_;
};

}  // namespace tolvane::ctl
