#pragma once

#include <cstdint>

#include "core/routing/mix/channel_table.h"
#include "core/routing/mix/mix_kernels.h"
#include "core/routing/mix/reference_mixer.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Fills every output buffer of the cycle: each routed channel with the sum of its routes, everything else
/// with zeros. Gives the same bits as clearOutputs() and then mixReference(), which it calls if buffers
/// overlap or are shorter than the cycle. Otherwise it writes each output once and does not read it back.
///
/// `frames` is at least 1. `in` and `out` are the tables of the two lists; their links are overwritten.
/// [io-thread]
void mixRoutes(const CycleRoutes& routes, const AudioBufferList& input, AudioBufferList& output,
               ChannelTable& in, ChannelTable& out, std::int64_t frames, const MixKernels& kernels) noexcept;

}  // namespace tolvane
