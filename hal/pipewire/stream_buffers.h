#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "hal/driver/device_info.h"

namespace tolvane::hal::pipewire {

inline constexpr std::uint32_t kMaxCycleFrames = 65536;  // beyond any quantum that a server runs with

/// One direction's streams as a buffer list, over buffers of one channel each, which come and go from cycle
/// to cycle. A stream of one channel is that channel's own buffer; one of several has an interleaved buffer
/// here, as long as one of its channels has one. All memory is made at once.
class StreamBuffers {
 public:
  /// Throws std::bad_alloc. [not-io]
  explicit StreamBuffers(const StreamLayout& streams);

  /// Of all streams. [any-thread]
  [[nodiscard]] std::size_t channels() const noexcept { return channels_.size(); }

  // Once a cycle of at most kMaxCycleFrames each, in this order. Wait-free. [io-thread]

  /// The samples of one channel for this cycle, or null.
  void set(std::size_t channel, void* data) noexcept { channels_[channel] = static_cast<float*>(data); }

  /// Makes the list one of a cycle of this many frames.
  void begin(std::uint32_t frames) noexcept;

  /// Of inputs: what the channels have is in the list.
  void gather() noexcept;

  [[nodiscard]] AudioBufferList& list() noexcept { return *reinterpret_cast<AudioBufferList*>(words_.get()); }

  /// Of outputs: what is in the list is what the channels have.
  void scatter() noexcept;

  /// Of outputs, instead: the channels are silent.
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
  std::unique_ptr<std::uint64_t[]> words_;
  std::uint32_t frames_ = 0;
};

}  // namespace tolvane::hal::pipewire
