#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "hal/surface/core_audio_types.h"

namespace tolvane::hal::pipewire {

/// A buffer list of one-channel streams, allocated once.
class StreamBuffers {
 public:
  explicit StreamBuffers(std::size_t streams)
      : words_(std::make_unique<std::uint64_t[]>(
            (offsetof(AudioBufferList, mBuffers) + streams * sizeof(AudioBuffer)) / sizeof(std::uint64_t))) {
    list().mNumberBuffers = static_cast<UInt32>(streams);
  }

  /// The samples of one stream for this cycle, or null. Wait-free. [io-thread]
  void set(std::size_t stream, void* data, std::uint32_t frames) noexcept {
    list().mBuffers[stream] = {1, static_cast<UInt32>(frames * sizeof(float)), data};
  }

  [[nodiscard]] AudioBufferList& list() noexcept { return *reinterpret_cast<AudioBufferList*>(words_.get()); }

 private:
  std::unique_ptr<std::uint64_t[]> words_;
};

}  // namespace tolvane::hal::pipewire
