// The IO callback that the engine registers with a device, and the routing routine behind it.
#pragma once

#include "hal/core_audio.h"

namespace tolvane {

/// Runs one IO cycle. Clears every output buffer, then adds each published route's input channel, times its
/// gain, to its output channel, in route order. Product and sum are rounded separately. No clipping, no
/// smoothing.
///
/// `clientData` is the IOProcContext, or null; with null the call does nothing. A buffer without data still
/// uses up its channel numbers. A null list counts as a list without buffers. Routes that name a missing
/// channel, or one without data, are skipped. The frame count is that of the first output buffer; input
/// buffers must be as long. Nothing is written if a channel count of the context is below 1.
///
/// Without memory for one of its two tables the cycle is silent.
///
/// A negative route count ends the process, and so does a buffer with data and more channels than a signed
/// 32-bit number holds.
///
/// Does not lock or wait. Allocates and frees two tables; the first cycle of the process also writes a trace
/// to standard output. The caller owns the lists and the context. [io-thread]
void routeCycle(const AudioBufferList* input, AudioBufferList* output, void* clientData) noexcept;

/// routeCycle for audio that does not come from a device. The call is not counted as a cycle of the process
/// and writes no trace. [any-thread, one call at a time for a context]
void routeUntraced(const AudioBufferList* input, AudioBufferList* output, void* clientData) noexcept;

extern "C" {

/// routeCycle behind the HAL's callback signature; always returns noErr. [io-thread]
OSStatus halIOProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                   const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                   const AudioTimeStamp* outputTime, void* clientData) noexcept;
}

}  // namespace tolvane
