#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "hal/driver/buffer_list.h"
#include "hal/driver/device_info.h"

namespace tolvane::hal::pipewire {

inline constexpr std::uint32_t kMaxCycleFrames = 65536;  // no server runs with a longer quantum

/// One direction's streams as a buffer list over single-channel buffers, which change from cycle to cycle. A
/// stream of one channel uses that channel's buffer. A stream of several channels has its own interleaved
/// buffer, and has data while at least one of its channels has a buffer. The constructor allocates all
/// memory.
class StreamBuffers {
 public:
  /// Throws std::bad_alloc. [not-io]
  explicit StreamBuffers(const StreamLayout& streams);

  /// The number of channels of all streams together. [any-thread]
  [[nodiscard]] std::size_t channels() const noexcept { return channels_.size(); }

  // Called in this order, once per cycle of at most kMaxCycleFrames. Wait-free. [io-thread]

  /// Sets one channel's samples for this cycle; null if it has none.
  void set(std::size_t channel, void* data) noexcept { channels_[channel] = static_cast<float*>(data); }

  /// Prepares the list for a cycle of this many frames.
  void begin(std::uint32_t frames) noexcept;

  /// For inputs: copies the channels' samples into the list.
  void gather() noexcept;

  [[nodiscard]] AudioBufferList& list() noexcept { return buffers_.list(); }

  /// For outputs: copies the list's samples to the channels.
  void scatter() noexcept;

  /// For outputs, instead of scatter(): silences the channels.
  void silence() noexcept;

 private:
  /// A stream of several channels.
  struct Interleaved {
    std::uint32_t stream;
    std::span<float*> channels;
    std::unique_ptr<float[]> samples;
  };

  [[nodiscard]] static bool hasData(const Interleaved& stream) noexcept;

  StreamLayout streams_;
  std::vector<float*> channels_;
  std::vector<Interleaved> interleaved_;
  BufferList buffers_;
  std::uint32_t frames_ = 0;
};

}  // namespace tolvane::hal::pipewire
