#pragma once

#include <cstdint>

#include "core/mix/channel_table.h"
#include "core/mix/cycle_routes.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Adds one route's input, times its gain, to its output, frame after frame. [io-thread]
void addRoute(const CycleRoute& route, const ChannelSlot& out, std::int64_t frames) noexcept;

/// Adds route after route, frame after frame: what defines the result. Where buffers overlap, this order is
/// the only one that gives it. The outputs have been cleared. [io-thread]
void mixPlainly(const CycleRoutes& routes, const ChannelTable& out, std::int64_t frames) noexcept;

}  // namespace tolvane
