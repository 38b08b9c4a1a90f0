#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "core/patch/patch_connection.h"
#include "core/routing/routing_context.h"
#include "hal/driver/driver.h"

namespace tolvane::test {

/// Stands in for the HAL in tests of the driver: routes with a routing context, as the engine's callback
/// does, and counts the driver's notifications.
class JackSessionClient final : public hal::SessionClient {
 public:
  JackSessionClient(std::int64_t inputs, std::int64_t outputs, std::span<const PatchConnection> routes);

  void cycle(const hal::IoCycle& cycle) noexcept override;
  void overload() noexcept override { ++overloads; }
  void aliveChanged(bool isAlive) noexcept override { alive = isAlive; }
  void formatChanged(double rateHz, std::uint32_t frames) noexcept override {
    sampleRateHz = rateHz;
    bufferFrames = frames;
  }

  void linksRemoved(const hal::RemovedLinks& links) override {
    const std::lock_guard lock(mutex_);
    removed_ = links;
    ++removals;
  }
  [[nodiscard]] hal::RemovedLinks removed() const {
    const std::lock_guard lock(mutex_);
    return removed_;
  }

  /// Publishes another patch, effective from the next cycle on. [main-thread]
  void publish(std::span<const PatchConnection> routes) { writeConnections(&context_, routes); }

  std::atomic<std::uint64_t> cycles{0};
  std::atomic<std::uint64_t> overloads{0};
  std::atomic<int> removals{0};  // reports so far
  std::atomic<bool> alive{true};
  std::atomic<double> sampleRateHz{0.0};
  std::atomic<std::uint32_t> bufferFrames{0};

  /// From the last cycle. Written before `cycles` is incremented.
  AudioTimeStamp now{};
  AudioTimeStamp inputTime{};
  AudioTimeStamp outputTime{};
  std::vector<AudioBuffer> inputBuffers;
  std::vector<AudioBuffer> outputBuffers;

 private:
  IOProcContext context_;
  mutable std::mutex mutex_;  // guards removed_
  hal::RemovedLinks removed_;
};

}  // namespace tolvane::test
