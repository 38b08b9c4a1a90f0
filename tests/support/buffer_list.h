// Buffer lists for the IO callback, made by a test instead of a device.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "hal/core_audio.h"

namespace tolvane::test {

/// Owns the buffer list and the samples. Every stream's samples lie between two guard zones, so that
/// guardsIntact() detects a write outside of them in every build.
class BufferList {
 public:
  BufferList() { rebuild(); }

  /// Adds a stream of interleaved channels in which every sample is `fill`.
  BufferList& add(UInt32 channels, std::size_t frames, float fill = 0.0F) {
    return addStream(channels, channels * frames, fill);
  }
  /// Adds a stream of `samples` samples, which need not be whole frames.
  BufferList& addStream(UInt32 channels, std::size_t samples, float fill = 0.0F) {
    Stream stream{channels, samples, std::vector<float>(samples + 2 * kGuard, kGuardValue),
                  static_cast<UInt32>(samples * sizeof(float))};
    std::fill_n(stream.storage.begin() + kGuard, samples, fill);
    streams_.push_back(std::move(stream));
    rebuild();
    return *this;
  }
  /// Adds a stream without data in this cycle. `bytes` is the size that its buffer states.
  BufferList& addWithoutData(UInt32 channels, UInt32 bytes = 0) {
    streams_.push_back({channels, 0, {}, bytes});
    rebuild();
    return *this;
  }

  [[nodiscard]] AudioBufferList* get() { return reinterpret_cast<AudioBufferList*>(records_.get()); }
  [[nodiscard]] AudioBuffer& buffer(std::size_t index) { return get()->mBuffers[index]; }
  [[nodiscard]] std::size_t size() const { return streams_.size(); }

  /// All samples of one stream, interleaved.
  [[nodiscard]] std::span<float> samples(std::size_t index) {
    Stream& stream = streams_[index];
    return std::span(stream.storage).subspan(stream.storage.empty() ? 0 : kGuard, stream.samples);
  }
  [[nodiscard]] std::vector<float> copyOf(std::size_t index) {
    const std::span<float> all = samples(index);
    return {all.begin(), all.end()};
  }
  /// One channel of one stream.
  [[nodiscard]] std::vector<float> channel(std::size_t index, std::size_t channelInStream) {
    std::vector<float> result;
    const std::span<float> all = samples(index);
    for (std::size_t s = channelInStream; s < all.size(); s += streams_[index].channels)
      result.push_back(all[s]);
    return result;
  }

  [[nodiscard]] bool guardsIntact() const {
    const auto isGuard = [](float value) { return value == kGuardValue; };
    return std::all_of(streams_.begin(), streams_.end(), [&](const Stream& stream) {
      if (stream.storage.empty()) return true;
      return std::all_of(stream.storage.begin(), stream.storage.begin() + kGuard, isGuard) &&
             std::all_of(stream.storage.end() - kGuard, stream.storage.end(), isGuard);
    });
  }

 private:
  static constexpr std::size_t kGuard = 16;
  static constexpr float kGuardValue = -12345.5F;

  struct Stream {
    UInt32 channels;
    std::size_t samples;
    std::vector<float> storage;  // empty if the stream has no data
    UInt32 bytes;
  };

  // AudioBufferList ends in an array of mNumberBuffers elements.
  void rebuild() {
    records_ = std::make_unique<std::byte[]>(offsetof(AudioBufferList, mBuffers) +
                                             streams_.size() * sizeof(AudioBuffer));
    get()->mNumberBuffers = static_cast<UInt32>(streams_.size());
    for (std::size_t i = 0; i < streams_.size(); ++i) {
      Stream& stream = streams_[i];
      void* const data = stream.storage.empty() ? nullptr : stream.storage.data() + kGuard;
      buffer(i) = {stream.channels, stream.bytes, data};
    }
  }

  std::vector<Stream> streams_;
  std::unique_ptr<std::byte[]> records_;
};

}  // namespace tolvane::test
