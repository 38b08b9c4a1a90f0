#include "core/routing/routing_context.h"

#include <limits>

#include "base/fatal.h"
#include "base/thread_check.h"
#include "core/routing/atomic32.h"

namespace tolvane {

namespace {

std::int32_t toInt32(std::int64_t value, const char* otherwise) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  if (value < Limits::min() || value > Limits::max()) fatal(otherwise);
  return static_cast<std::int32_t>(value);
}

void storeEntry(PatchEntry& entry, const PatchConnection& route) noexcept {
  storeRelaxed(entry.src, toInt32(route.inputChannel, "input channel of a route is beyond 32 bits"));
  storeRelaxed(entry.dst, toInt32(route.outputChannel, "output channel of a route is beyond 32 bits"));
  storeRelaxed(entry.gain, route.gain);
}

}  // namespace

IOProcContext initialContext(std::int64_t inputChannels, std::int64_t outputChannels) noexcept {
  IOProcContext context;
  const PatchEntry unpublished{-1, -1, 1.0F};
  context.patchesA.fill(unpublished);
  context.countA = 0;
  context.patchesB.fill(unpublished);
  context.countB = 0;
  context.activeBuf = 0;
  context.inputChannelCount = toInt32(inputChannels, "input channel count of the device is beyond 32 bits");
  context.outputChannelCount =
      toInt32(outputChannels, "output channel count of the device is beyond 32 bits");
  return context;
}

void writeConnections(IOProcContext* context, std::span<const PatchConnection> connections) {
  checkMainThread();
  const bool liveIsA = loadAcquire(context->activeBuf) == 0;
  auto& entries = liveIsA ? context->patchesB : context->patchesA;
  std::int32_t count = 0;
  for (const PatchConnection* route : soundingRoutes(connections)) {
    storeEntry(entries[static_cast<std::size_t>(count++)], *route);
  }
  storeRelaxed(liveIsA ? context->countB : context->countA, count);
  addRelease(context->activeBuf, liveIsA ? 1 : -1);
}

}  // namespace tolvane
