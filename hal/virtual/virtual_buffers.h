#pragma once

#include <cstdint>
#include <vector>

#include "hal/driver/buffer_list.h"
#include "hal/driver/device_info.h"
#include "hal/support/sample_memory.h"

namespace tolvane::hal {

/// The buffers of one direction, in one block of memory. Each stream's samples begin on a cache line. In
/// every cycle the streams lie close together, so that few of them fall into the same cache sets.
class VirtualBuffers {
 public:
  /// For up to `maxFrames` frames per cycle. The streams at the indices in `withoutData` have no data. Throws
  /// std::bad_alloc. [not-io]
  VirtualBuffers(const StreamLayout& streams, const std::vector<std::size_t>& withoutData,
                 std::uint32_t maxFrames);

  /// The list, with every buffer's address and size for this many frames. List and samples stay valid until
  /// the next call with another number. [io-thread]
  AudioBufferList& list(std::uint32_t frames) noexcept;

 private:
  BufferList buffers_;
  SampleMemory samples_;
};

}  // namespace tolvane::hal
