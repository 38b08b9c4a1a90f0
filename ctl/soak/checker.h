// The soak's side of each IO cycle: routes its own signals, and compares every sample that comes out.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ctl/publication/cycle_marks.h"
#include "ctl/soak/channels.h"
#include "ctl/soak/histogram.h"
#include "ctl/soak/loop_check.h"
#include "ctl/soak/tables.h"
#include "hal/core_audio.h"

namespace tolvane::ctl {

/// What a soak has counted. Samples are of all channels together.
struct SoakCounts {
  std::uint64_t cycles = 0;
  std::uint64_t frames = 0;
  std::uint64_t uncheckedCycles = 0;  // without frames, or longer than kMostFrames
  std::uint64_t right = 0;            // samples that the routing wrote as it should
  std::uint64_t wrong = 0;            // and others
  // Overloads, by what shows them.
  std::uint64_t longCallbacks = 0;  // the routing took longer than the cycle lasts
  std::uint64_t lateCycles = 0;     // a cycle began a cycle's length late or more
  std::uint64_t gaps = 0;           // jumps of the device's frame count
  std::uint64_t gapFrames = 0;
};

/// Runs on the IO thread. All memory is made before, all that the main thread reads is atomic.
class SoakChecker {
 public:
  static constexpr std::size_t kMostFrames = 8192;

  /// `routing` is the callback that is checked. [not-io]
  SoakChecker(std::size_t inputs, std::size_t outputs, double sampleRateHz, AudioDeviceIOProc routing);

  [[nodiscard]] CycleMarks& cycleMarks() noexcept { return cycleMarks_; }
  [[nodiscard]] SoakTables& tables() noexcept { return tables_; }
  [[nodiscard]] LoopCheck& loops() noexcept { return loops_; }
  [[nodiscard]] const LoopCheck& loops() const noexcept { return loops_; }
  /// How long the routing took in each cycle.
  [[nodiscard]] const Histogram& callbackTimes() const noexcept { return callbackTimes_; }
  /// How much later than the device's own time of it each cycle began.
  [[nodiscard]] const Histogram& lateness() const noexcept { return lateness_; }

  /// [any-thread]
  [[nodiscard]] SoakCounts counts() const noexcept;
  /// The first wrong sample in words; none if all were right. [not-io]
  [[nodiscard]] std::optional<std::string> firstWrong() const;

  /// [io-thread]
  OSStatus cycle(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* input,
                 const AudioTimeStamp* inputTime, AudioBufferList* output, const AudioTimeStamp* outputTime,
                 void* clientData) noexcept;

 private:
  using Counter = std::atomic<std::uint64_t>;
  struct Counters {
    Counter cycles{0}, frames{0}, uncheckedCycles{0}, right{0}, wrong{0}, longCallbacks{0}, lateCycles{0},
        gaps{0}, gapFrames{0};
  };
  struct WrongSample {
    std::uint64_t cycle;
    std::size_t output;
    std::size_t frame;
    float wanted;
    float found;
  };

  void noteBegin(const AudioTimeStamp* now, std::int64_t beginNs, std::size_t frames) noexcept;
  const AudioBufferList* makeSignals(const AudioBufferList& like, std::uint64_t first,
                                     std::size_t frames) noexcept;
  void compareWith(std::uint64_t lowest, std::uint64_t highest, std::size_t frames) noexcept;
  std::uint64_t wrongSamples(const RouteTable& table, std::size_t frames,
                             std::optional<WrongSample>& example) noexcept;
  void mix(const RouteTable& table, std::size_t output, std::size_t frames) noexcept;
  static void add(Counter& count, std::uint64_t more) noexcept {
    count.store(count.load(std::memory_order_relaxed) + more, std::memory_order_relaxed);
  }

  const std::size_t inputs_;
  const double sampleRateHz_;
  const AudioDeviceIOProc routing_;
  CycleMarks cycleMarks_;
  SoakTables tables_;
  LoopCheck loops_;
  Histogram callbackTimes_;
  Histogram lateness_;
  Counters counters_;

  ChannelSet deviceInputs_;
  ChannelSet deviceOutputs_;
  std::vector<float> planes_;          // the signals, one channel after the other
  std::vector<float> streams_;         // the same in the device's layout
  std::vector<std::byte> listMemory_;  // of the list of the streams
  std::vector<float> wanted_;          // one output channel
  double nextSampleTime_ = 0.0;
  WrongSample firstWrong_{};
  std::atomic<bool> hasFirstWrong_{false};
};

/// Sets the checker that soakIoProc uses; null for none. It must outlive the run. [main-thread, while no
/// device runs]
void setSoakChecker(SoakChecker* checker) noexcept;

extern "C" {

/// The callback of a soak. [io-thread]
OSStatus soakIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                    const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                    const AudioTimeStamp* outputTime, void* clientData) noexcept;
}

}  // namespace tolvane::ctl
