// Counting cycles and taking peaks around the routing callback.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "core/patch_connection.h"
#include "hal/core_audio.h"

namespace tolvane::ctl {

/// The cycles of a run, and the peaks of its routed channels. The IO thread adds, the main thread takes away;
/// all storage is there before the run. Every operation of either side is lock-free.
class MeterBank {
 public:
  /// Room for a device's channels; a channel that the device has beyond them is not metered. [not-io]
  MeterBank(std::size_t inputs, std::size_t outputs);

  /// Meters the channels of these active routes from now on, and no others. [main-thread]
  void meter(std::span<const PatchConnection> routes) noexcept;

  /// Counts one cycle and raises the peaks by its buffers; either list may be null. [io-thread]
  void observe(const AudioBufferList* input, const AudioBufferList* output) noexcept;

  /// The highest magnitude since it was last taken; 0 for a channel that is not metered. A sample that is not
  /// a number is above all others. [main-thread]
  [[nodiscard]] float takeInputPeak(std::size_t channel) noexcept;
  [[nodiscard]] float takeOutputPeak(std::size_t channel) noexcept;

  /// [any-thread]
  [[nodiscard]] std::uint64_t cycles() const noexcept { return cycles_.load(std::memory_order_relaxed); }

 private:
  struct Channel {
    std::atomic<std::uint32_t> metered{0};
    std::atomic<std::uint32_t> peakBits{0};  // of a magnitude, which orders as its bits do
  };
  struct Side {
    explicit Side(std::size_t channelCount)
        : count(channelCount), channels(std::make_unique<Channel[]>(channelCount)) {}
    void meterOnly(std::span<const PatchConnection> routes, std::int64_t PatchConnection::*channel) noexcept;
    void observe(const AudioBufferList* list) noexcept;
    [[nodiscard]] float takePeak(std::size_t channel) noexcept;

    std::size_t count;
    std::unique_ptr<Channel[]> channels;
  };
  static void raisePeak(Channel& channel, const float* first, std::size_t frames,
                        std::size_t stride) noexcept;

  static_assert(std::atomic<std::uint32_t>::is_always_lock_free &&
                    std::atomic<std::uint64_t>::is_always_lock_free,
                "the IO thread must never meet a lock");

  Side inputs_;
  Side outputs_;
  std::atomic<std::uint64_t> cycles_{0};
};

/// The bank that meteredIoProc fills; null, as at first, fills none. It must outlive the run. [main-thread,
/// while no device runs]
void setMeterBank(MeterBank* bank) noexcept;

extern "C" {

/// halIOProc, observed by the meter bank. [io-thread]
OSStatus meteredIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                       const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                       const AudioTimeStamp* outputTime, void* clientData) noexcept;
}

}  // namespace tolvane::ctl
