// The memory that the main thread and the IO thread share: two route buffers and the index of the live one.
//
// The protocol, by role:
//   The writer (the main thread, one at a time) fills the buffer that is not live, stores its count, then
//   flips `activeBuf` with release semantics. It never waits for the reader.
//   The reader (the IO thread) loads `activeBuf` once a cycle with acquire semantics and uses that buffer for
//   the whole cycle.
//   Two publications within one cycle rewrite the buffer that the reader is using. In that cycle the reader
//   may see a mixture of old and new entries. It reads each field whole and checks every index, so at worst a
//   route is missing or goes astray for one cycle.
// Both sides are wait-free.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "core/patch/patch_connection.h"
#include "core/routing/sounding_routes.h"

namespace tolvane {

/// One route as the IO thread sees it. Channels are zero-based, counted across all buffers of the device.
struct PatchEntry {
  std::int32_t src;
  std::int32_t dst;
  float gain;
};

/// Plain memory: owns nothing, and may be copied, zeroed or freed as bytes. While the callback is registered,
/// all fields but the channel counts are accessed only through core/routing/atomic32.h.
struct IOProcContext {
  std::array<PatchEntry, kMaxPatchEntries> patchesA;
  std::int32_t countA;  // valid entries at the start of patchesA, 0..64
  std::array<PatchEntry, kMaxPatchEntries> patchesB;
  std::int32_t countB;              // as countA
  std::int32_t activeBuf;           // the live buffer: 0 is A, anything else is B
  std::int32_t inputChannelCount;   // fixed before the callback is registered
  std::int32_t outputChannelCount;  // as inputChannelCount
};

static_assert(std::is_trivially_copyable_v<IOProcContext> && std::is_standard_layout_v<IOProcContext>);
static_assert(sizeof(PatchEntry) == 12 && offsetof(PatchEntry, dst) == 4 && offsetof(PatchEntry, gain) == 8);
static_assert(sizeof(IOProcContext) == 1556);
static_assert(offsetof(IOProcContext, patchesA) == 0 && offsetof(IOProcContext, countA) == 768);
static_assert(offsetof(IOProcContext, patchesB) == 772 && offsetof(IOProcContext, countB) == 1540);
static_assert(offsetof(IOProcContext, activeBuf) == 1544);
static_assert(offsetof(IOProcContext, inputChannelCount) == 1548);
static_assert(offsetof(IOProcContext, outputChannelCount) == 1552);

/// A context with buffer A live and both buffers empty. Every entry routes -1 to -1 with gain 1.0, which is
/// harmless if it is ever read. A channel count beyond 32 bits ends the process. [any-thread]
[[nodiscard]] IOProcContext initialContext(std::int64_t inputChannels, std::int64_t outputChannels) noexcept;

/// Publishes soundingRoutes() of the list, in order. The IO thread uses them from its next cycle.
/// Channel numbers are copied unchanged; one beyond 32 bits ends the process before the flip. `context` must
/// not be null. One writer at a time. [main-thread]
void writeConnections(IOProcContext* context, std::span<const PatchConnection> connections);

}  // namespace tolvane
