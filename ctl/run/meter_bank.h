// Cycle counting and peak metering around the routing callback.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "core/routing/sounding_routes.h"
#include "ctl/publication/cycle_marks.h"
#include "hal/core_audio.h"

namespace tolvane::ctl {

/// The cycle count of a run and the peaks of its routed channels. The IO thread records, the main thread
/// reads and resets. All memory is allocated before the run, and every shared variable is a lock-free atomic.
class MeterBank {
 public:
  /// Allocates room for so many channels. Further channels of the device are not metered. [not-io]
  MeterBank(std::size_t inputs, std::size_t outputs);

  /// From now on, meters only the channels of the routes that sound. [main-thread]
  void meter(std::span<const PatchConnection> routes) noexcept;

  /// Counts one cycle and raises the peaks to those of its buffers. Either list may be null. [io-thread]
  void observe(const AudioBufferList* input, const AudioBufferList* output) noexcept;

  /// Returns the highest magnitude since the last call and resets it; 0 for a channel that is not metered.
  /// NaN counts as higher than any number. [main-thread]
  [[nodiscard]] float takeInputPeak(std::size_t channel) noexcept;
  [[nodiscard]] float takeOutputPeak(std::size_t channel) noexcept;

  /// Where meteredIoProc marks its cycles. [any-thread]
  [[nodiscard]] CycleMarks& cycleMarks() noexcept { return cycleMarks_; }

  /// [any-thread]
  [[nodiscard]] std::uint64_t cycles() const noexcept { return cycles_.load(std::memory_order_relaxed); }

 private:
  struct Channel {
    std::atomic<std::uint32_t> metered{0};
    std::atomic<std::uint32_t> peakBits{0};  // a float magnitude's bits, which order like the magnitude
  };
  struct Side {
    explicit Side(std::size_t channelCount)
        : count(channelCount), channels(std::make_unique<Channel[]>(channelCount)) {}
    void meterOnly(const SoundingRoutes& routes, std::int64_t PatchConnection::*channel) noexcept;
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
  CycleMarks cycleMarks_;
};

/// Sets the bank that meteredIoProc fills; null, the initial value, is none. The bank must outlive the run.
/// [main-thread, while no device runs]
void setMeterBank(MeterBank* bank) noexcept;

extern "C" {

/// Calls halIOProc, then meters its buffers with the current bank, which also gets the cycle's marks.
/// [io-thread]
OSStatus meteredIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                       const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                       const AudioTimeStamp* outputTime, void* clientData) noexcept;
}

}  // namespace tolvane::ctl
