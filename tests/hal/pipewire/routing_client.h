// The HAL's side of a session, with the program's own routing behind it.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <numeric>
#include <span>
#include <vector>

#include "core/routing/io_proc.h"
#include "core/routing/routing_context.h"
#include "hal/driver/driver.h"

namespace tolvane::test {

inline std::int64_t channelsOf(const hal::StreamLayout& streams) {
  return std::accumulate(streams.begin(), streams.end(), std::int64_t{0});
}

class RoutingClient final : public hal::SessionClient {
 public:
  RoutingClient(const hal::DeviceInfo& device, std::span<const PatchConnection> routes)
      : context_(initialContext(channelsOf(device.inputStreams), channelsOf(device.outputStreams))) {
    writeConnections(&context_, routes);
  }

  void cycle(const hal::IoCycle& cycle) noexcept override {
    routeCycle(cycle.input, cycle.output, &context_);
    cycles_.fetch_add(1);
  }
  void overload() noexcept override { overloads_.fetch_add(1); }
  void aliveChanged(bool alive) noexcept override {
    alive_ = alive;
    if (!alive) ++losses_;
  }
  void formatChanged(double sampleRateHz, std::uint32_t bufferFrames) noexcept override {
    sampleRateHz_ = sampleRateHz;
    bufferFrames_ = bufferFrames;
  }

  void linksRemoved(const hal::RemovedLinks& removed) override {
    const std::lock_guard lock(mutex_);
    removed_ = removed;
    ++removals_;
  }

  [[nodiscard]] hal::RemovedLinks removed() const {
    const std::lock_guard lock(mutex_);
    return removed_;
  }
  [[nodiscard]] int removals() const { return removals_; }  // reports so far
  [[nodiscard]] std::uint64_t cycles() const { return cycles_; }
  [[nodiscard]] std::uint32_t overloads() const { return overloads_; }
  [[nodiscard]] bool isAlive() const { return alive_; }
  [[nodiscard]] int losses() const { return losses_; }  // so far
  [[nodiscard]] double sampleRateHz() const { return sampleRateHz_; }
  [[nodiscard]] std::uint32_t bufferFrames() const { return bufferFrames_; }

 private:
  IOProcContext context_;
  std::atomic<std::uint64_t> cycles_ = 0;
  std::atomic<std::uint32_t> overloads_ = 0;
  std::atomic<bool> alive_ = true;
  std::atomic<double> sampleRateHz_ = 0.0;
  std::atomic<std::uint32_t> bufferFrames_ = 0;
  std::atomic<int> losses_ = 0;
  std::atomic<int> removals_ = 0;
  mutable std::mutex mutex_;  // guards removed_
  hal::RemovedLinks removed_;
};

/// A one-to-one patch: input n to output n at unit gain, for `count` channels.
inline std::vector<PatchConnection> straightThrough(std::size_t count) {
  std::vector<PatchConnection> routes;
  for (std::size_t n = 0; n < count; ++n) {
    const auto channel = static_cast<std::int64_t>(n);
    routes.push_back({channel, channel, 1.0F, true});
  }
  return routes;
}

}  // namespace tolvane::test
