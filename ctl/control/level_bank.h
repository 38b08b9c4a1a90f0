// Levels of all channels and the callback's time, measured around the routing callback while somebody may ask
// for them.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "ctl/control/meter.h"
#include "hal/core_audio.h"

namespace tolvane::ctl::control {

/// The share of the callback in the time of a cycle.
struct LoadReading {
  double mean = 0.0;
  double peak = 0.0;
  std::uint64_t overloads = 0;  // cycles whose callback took longer than the cycle, since the start
};

/// The IO thread measures, the main thread reads. All memory is allocated before the run.
///
/// The protocol of the levels, by role:
///   The main thread asks: it raises `asked_`. It touches `told_` only while `asked_` equals `answered_`.
///   The IO thread sees at the begin of its measuring that they differ. It copies its levels to `told_`,
///   clears them, and stores `answered_` with release semantics. It touches `told_` only while they differ.
/// Both sides are wait-free, and no level is lost or counted twice.
class LevelBank : public Meter {
 public:
  /// Further channels of the device are not measured. [not-io]
  LevelBank(std::size_t inputs, std::size_t outputs, double sampleRateHz);

  /// Measures a cycle: its buffers, either of which may be null, and the time that its callback took.
  /// [io-thread]
  void observe(const AudioBufferList* input, const AudioBufferList* output,
               std::chrono::nanoseconds callbackTime) noexcept;

  /// [main-thread]
  void ask() override;
  [[nodiscard]] std::optional<Meters> take() override;
  /// The mean is that of the last interval, which lasts a second, or until the first call after it. The peak
  /// is that of this interval and of the one that has begun. So whoever asks takes nothing from the others.
  /// [main-thread]
  [[nodiscard]] LoadReading load() noexcept;
  /// [main-thread]
  void setSampleRate(double hz) noexcept { sampleRateHz_.store(hz, std::memory_order_relaxed); }

 private:
  struct Sum {
    std::uint32_t peakBits = 0;  // a float magnitude's bits, which order like the magnitude
    double energy = 0.0;
    std::uint64_t frames = 0;
  };
  static void observe(const AudioBufferList* list, std::vector<Sum>& sums) noexcept;
  static void add(Sum& sum, const float* first, std::size_t frames, std::size_t stride) noexcept;
  static std::vector<Level> levelsOf(const std::vector<Sum>& sums);
  void noteTime(std::uint64_t frames, std::chrono::nanoseconds time) noexcept;

  static_assert(std::atomic<std::uint64_t>::is_always_lock_free && std::atomic<double>::is_always_lock_free,
                "the IO thread must never meet a lock");

  std::vector<Sum> inputs_;   // of the IO thread
  std::vector<Sum> outputs_;  // likewise
  std::vector<Sum> toldInputs_;
  std::vector<Sum> toldOutputs_;
  std::atomic<std::uint32_t> asked_{0};
  std::atomic<std::uint32_t> answered_{0};
  std::uint32_t taken_ = 0;  // of the main thread

  std::atomic<double> sampleRateHz_;
  std::atomic<std::uint64_t> busyNs_{0};
  std::atomic<std::uint64_t> frames_{0};
  std::atomic<std::uint64_t> overloads_{0};
  std::atomic<double> peakLoad_{0.0};
  std::uint64_t busyNsBefore_ = 0;  // at the begin of the interval; of the main thread
  std::uint64_t framesBefore_ = 0;  // likewise
  LoadReading lastLoad_;            // of the interval before; likewise
};

/// Sets the bank that controlledIoProc fills; null, the initial value, is none. The bank must outlive the
/// run. [main-thread, while no device runs]
void setLevelBank(LevelBank* bank) noexcept;
/// That bank. [any-thread]
[[nodiscard]] LevelBank* levelBank() noexcept;

}  // namespace tolvane::ctl::control
