#pragma once

#include <cstdint>

#include "core/mix/channel_table.h"
#include "core/mix/mix_kernels.h"
#include "core/mix/plain_mixer.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Fills every output buffer of the cycle: each routed channel with the sum of its routes, all else with
/// zeros; the same bits as clearOutputs followed by mixPlainly. Each output is written once and not read
/// back, each cache line of an interleaved buffer is met once. Buffers that overlap, or that are shorter than
/// the cycle, are left to the plain order.
///
/// `frames` is at least 1. The tables are those of the lists; their links are used up. [io-thread]
void mixRoutes(const CycleRoutes& routes, const AudioBufferList& input, AudioBufferList& output,
               ChannelTable& in, ChannelTable& out, std::int64_t frames, const MixKernels& kernels) noexcept;

}  // namespace tolvane
