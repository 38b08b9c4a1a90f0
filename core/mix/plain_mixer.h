#pragma once

#include <cstdint>

#include "core/mix/channel_table.h"
#include "core/routing_context.h"
#include "hal/core_audio.h"

namespace tolvane {

/// The published routes of one cycle that name channels with data, in their order.
struct CycleRoutes {
  PatchEntry entries[kMaxPatchEntries];
  std::int32_t count = 0;
};

/// Clears every output buffer that has channels and data, all its bytes. [io-thread]
void clearOutputs(AudioBufferList& output) noexcept;

/// Adds route after route, frame after frame: what defines the result. Where buffers overlap, this order is
/// the only one that gives it. The outputs have been cleared. [io-thread]
void mixPlainly(const CycleRoutes& routes, const ChannelTable& in, const ChannelTable& out,
                std::int64_t frames) noexcept;

}  // namespace tolvane
