#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "hal/driver/device_info.h"

namespace tolvane::hal {

/// One direction's buffers, all of their memory made at once: each stream's samples begin on a cache line. In
/// every cycle they lie close together, so that few of them share a place in the caches.
class VirtualBuffers {
 public:
  static constexpr std::size_t kAlignment = 64;

  /// For up to `maxFrames` frames a cycle; the streams with the given indices are without data. Throws
  /// std::bad_alloc. [not-io]
  VirtualBuffers(const StreamLayout& streams, const std::vector<std::size_t>& withoutData,
                 std::uint32_t maxFrames);

  /// The list, with every buffer's place and size for this many frames; holds, as do the samples, until the
  /// next call with another number. [io-thread]
  AudioBufferList& list(std::uint32_t frames) noexcept;

 private:
  struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
  };

  std::unique_ptr<std::byte[]> listBytes_;
  std::unique_ptr<float, Free> samples_;
};

}  // namespace tolvane::hal
