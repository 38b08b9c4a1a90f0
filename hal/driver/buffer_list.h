#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "hal/surface/core_audio_types.h"

namespace tolvane::hal {

/// Owns an AudioBufferList with a fixed number of buffers, but not their samples. The constructor allocates
/// all memory.
class BufferList {
 public:
  /// The size of a list of this many buffers. [any-thread]
  [[nodiscard]] static constexpr std::size_t bytes(std::size_t buffers) noexcept {
    return offsetof(AudioBufferList, mBuffers) + buffers * sizeof(AudioBuffer);
  }

  /// Every buffer starts without channels and without data. Throws std::bad_alloc. [not-io]
  explicit BufferList(std::size_t buffers);

  /// Valid until this object is assigned to or destroyed. [any-thread]
  [[nodiscard]] AudioBufferList& list() noexcept {
    return *reinterpret_cast<AudioBufferList*>(memory_.get());
  }

  /// Sets a buffer: `frames` frames of interleaved channels at `data`, which is null if it has none.
  /// [any-thread]
  void set(std::size_t buffer, std::uint32_t channels, std::size_t frames, void* data) noexcept {
    list().mBuffers[buffer] = {channels, static_cast<UInt32>(frames * channels * sizeof(Float32)), data};
  }

 private:
  std::unique_ptr<std::byte[]> memory_;
};

}  // namespace tolvane::hal
