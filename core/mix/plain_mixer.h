#pragma once

#include <cstdint>

#include "core/mix/channel_table.h"
#include "core/mix/cycle_routes.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Adds one channel, scaled, to another, frame after frame. [io-thread]
void addChannel(const ChannelSlot& in, const ChannelSlot& out, float gain, std::int64_t frames) noexcept;

/// Adds route after route, frame after frame: what defines the result. Where buffers overlap, this order is
/// the only one that gives it. The outputs have been cleared. [io-thread]
void mixPlainly(const CycleRoutes& routes, const ChannelTable& in, const ChannelTable& out,
                std::int64_t frames) noexcept;

}  // namespace tolvane
