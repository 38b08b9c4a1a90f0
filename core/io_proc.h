// The IO callback that the engine registers with a device, and the routing routine behind it.
#pragma once

#include "hal/core_audio.h"

namespace tolvane {

/// One IO cycle: clears every output buffer, then adds each published route's input channel, times its gain,
/// to its output channel, in route order; product and sum are rounded each. No clipping, no smoothing.
///
/// `clientData` is the IOProcContext, or null (then nothing is done). A list may have buffers without data:
/// they use up their channel numbers; a null list has no buffers. Routes that name a channel which is not
/// there are skipped. The frame count is that of the first output buffer; input buffers must be as long.
/// Nothing is written when a channel count of the context is below 1.
///
/// A negative route count, and a buffer with data and more channels than a signed 32-bit number holds, end
/// the process.
/// It neither locks nor waits; it allocates and frees two tables, and on the first cycle of the process
/// writes a trace to standard output. The lists and the context are the caller's. [io-thread]
void routeCycle(const AudioBufferList* input, AudioBufferList* output, void* clientData) noexcept;

/// routeCycle for audio that is no device's: it is no cycle of the process, so nothing is counted and nothing
/// traced. [any-thread, one at a time for a context]
void routeUntraced(const AudioBufferList* input, AudioBufferList* output, void* clientData) noexcept;

extern "C" {

/// routeCycle behind the HAL's callback signature; always returns noErr. [io-thread]
OSStatus halIOProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                   const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                   const AudioTimeStamp* outputTime, void* clientData) noexcept;
}

}  // namespace tolvane
