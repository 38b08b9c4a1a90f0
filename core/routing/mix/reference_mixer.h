#pragma once

#include <cstdint>

#include "core/routing/mix/channel_table.h"
#include "core/routing/mix/cycle_routes.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Adds one route's input, times its gain, to its output. [io-thread]
void addRoute(const CycleRoute& route, const ChannelSlot& out, std::int64_t frames) noexcept;

/// Adds one route after the other to the cleared outputs. This order defines the result of a cycle: if
/// buffers overlap, no other order gives it. [io-thread]
void mixReference(const CycleRoutes& routes, const ChannelTable& out, std::int64_t frames) noexcept;

}  // namespace tolvane
