#include "core/routing/io_proc.h"

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cstdint>
#include <optional>

#include "base/fatal.h"
#include "base/thread_check.h"
#include "core/routing/atomic32.h"
#include "core/routing/mix/channel_table.h"
#include "core/routing/mix/clear.h"
#include "core/routing/mix/cycle_mixer.h"
#include "core/routing/routing_context.h"
#include "core/routing/trace.h"

namespace tolvane {

namespace {

// Cycles that this process has run, modulo 2^32.
std::int32_t ioProcCallCount = 0;
// The counter wraps to 1 after weeks or months. This flag remembers that the first cycle is long past.
constinit std::atomic_flag firstCallMade;

/// Counts a cycle. Returns true for the first cycle of the process, which is traced.
bool isFirstCall() noexcept {
  return addRelease(ioProcCallCount, 1) == 1 && !firstCallMade.test_and_set(std::memory_order_relaxed);
}

/// The frame count of the cycle, from the first output buffer; none if that buffer is missing or empty.
std::optional<std::int64_t> frameCountOf(const AudioBufferList& output) noexcept {
  if (output.mNumberBuffers == 0) return std::nullopt;
  const AudioBuffer& first = output.mBuffers[0];
  if (first.mNumberChannels == 0 || first.mDataByteSize == 0) return std::nullopt;
  const std::uint64_t frameBytes = std::uint64_t{first.mNumberChannels} * sizeof(float);
  return static_cast<std::int64_t>(first.mDataByteSize / frameBytes);
}

/// The live buffer of the context, chosen once and used for the whole cycle.
struct LiveRoutes {
  const PatchEntry* entries;
  std::int32_t count;
};

LiveRoutes liveRoutes(const IOProcContext& context) noexcept {
  const bool liveIsA = loadAcquire(context.activeBuf) == 0;
  return {liveIsA ? context.patchesA.data() : context.patchesB.data(),
          loadRelaxed(liveIsA ? context.countA : context.countB)};
}

/// True if 0 <= channel < count.
bool isBelow(std::int32_t channel, std::int32_t count) noexcept {
  return static_cast<std::uint32_t>(channel) < static_cast<std::uint32_t>(count);
}

/// The live routes whose channels are below the bounds and have data on both sides.
CycleRoutes audibleRoutes(const LiveRoutes& live, const ChannelTable& in, ChannelTable& out, std::int32_t nIn,
                          std::int32_t nOut) noexcept {
  // No published count exceeds the capacity. Clamp it anyway, so that no read passes the end of the entries.
  CycleRoutes routes(std::min(live.count, kMaxPatchEntries));
  const ChannelSlot* const inputs = &in[0];
  ChannelSlot* const outputs = &out[0];
  for (std::int32_t i = routes.count() - 1; i >= 0; --i) {
    // Each field is read once: the writer may be changing the entry, and the checked value must be the one
    // used.
    const PatchEntry entry = {loadRelaxed(live.entries[i].src), loadRelaxed(live.entries[i].dst),
                              loadRelaxed(live.entries[i].gain)};
    const bool isHeard = isBelow(entry.src, nIn) && isBelow(entry.dst, nOut) &&
                         inputs[entry.src].data != nullptr && outputs[entry.dst].data != nullptr;
    if (isHeard) {
      routes.put(i, entry, inputs[entry.src], outputs[entry.dst]);
    } else {
      routes.leaveOut(i);
    }
  }
  return routes;
}

void routeInto(const AudioBufferList& input, AudioBufferList& output, const IOProcContext& context,
               bool firstCall) noexcept {
  const std::int32_t maxIn = context.inputChannelCount;
  const std::int32_t maxOut = context.outputChannelCount;
  if (firstCall) traceLine("[IOProc] maxIn=%" PRId32 " maxOut=%" PRId32, maxIn, maxOut);
  if (maxIn < 1 || maxOut < 1) return;

  const std::int64_t capacity = std::int64_t{maxIn} + maxOut + 2;
  ChannelTable in(capacity);
  ChannelTable out(capacity);
  // A silent cycle is better than the end of the process: the next cycle may have memory again.
  if (!in.isAllocated() || !out.isAllocated()) return clearOutputs(output);
  if (firstCall) traceLine("[IOProc] flattening input ABL...");
  in.addChannelsOf(input);
  if (firstCall) traceLine("[IOProc] inCh=%" PRId64 " — flattening output ABL...", in.channelCount());
  out.addChannelsOf(output);
  if (firstCall) traceLine("[IOProc] outCh=%" PRId64, out.channelCount());

  const std::optional<std::int64_t> frames = frameCountOf(output);
  if (firstCall && frames) traceLine("[IOProc] frameCount=%" PRId64, *frames);
  if (frames.value_or(0) == 0) return clearOutputs(output);

  const LiveRoutes live = liveRoutes(context);
  if (firstCall) traceLine("[IOProc] patchCount=%" PRId32 " routing...", live.count);
  if (live.count < 0) fatal("the number of published routes is negative");
  const auto nIn = static_cast<std::int32_t>(std::min<std::int64_t>(in.channelCount(), maxIn));
  const auto nOut = static_cast<std::int32_t>(std::min<std::int64_t>(out.channelCount(), maxOut));
  const CycleRoutes routes = audibleRoutes(live, in, out, nIn, nOut);
  CycleMixer(routes, in, out, *frames, mixKernels()).mix(input, output);
  if (firstCall) traceLine("[IOProc] first call completed OK ✓");
}

void routeLists(const AudioBufferList* input, AudioBufferList* output, const void* clientData,
                bool firstCall) noexcept {
  if (clientData == nullptr) return;
  // The HAL may pass a null list for a direction that the device lacks.
  const AudioBufferList noInput{};
  AudioBufferList noOutput{};
  routeInto(input != nullptr ? *input : noInput, output != nullptr ? *output : noOutput,
            *static_cast<const IOProcContext*>(clientData), firstCall);
}

void traceFirstCall(const void* clientData) noexcept {
  if (clientData == nullptr) return traceLine("[IOProc] first call clientData=nil");
  traceLine("[IOProc] first call clientData=0x%016" PRIxPTR, reinterpret_cast<std::uintptr_t>(clientData));
}

}  // namespace

void routeCycle(const AudioBufferList* input, AudioBufferList* output, void* clientData) noexcept {
  const bool firstCall = isFirstCall();
  if (firstCall) traceFirstCall(clientData);
  routeLists(input, output, clientData, firstCall);
}

void routeUntraced(const AudioBufferList* input, AudioBufferList* output, void* clientData) noexcept {
  routeLists(input, output, clientData, false);
}

OSStatus halIOProc(AudioObjectID /*device*/, const AudioTimeStamp* /*now*/, const AudioBufferList* inputData,
                   const AudioTimeStamp* /*inputTime*/, AudioBufferList* outputData,
                   const AudioTimeStamp* /*outputTime*/, void* clientData) noexcept {
  // The operating system's HAL does not mark its IO callbacks, so the callback marks itself.
  const IoCallbackScope scope;
  routeCycle(inputData, outputData, clientData);
  return noErr;
}

}  // namespace tolvane
