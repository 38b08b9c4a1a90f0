// A callback that blocks the IO thread for longer than the card's buffer lasts.
#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "alsa_guest/guest_machine.h"
#include "alsa_guest/loopback_bench.h"
#include "hal/alsa/alsa_driver.h"
#include "hal/hal_client.h"
#include "hal/pipewire/routing_client.h"

namespace tolvane::test {
namespace {

using SteadyClock = std::chrono::steady_clock;

class StallingClient final : public hal::SessionClient {
 public:
  explicit StallingClient(hal::SessionClient& next) : next_(next) {}

  void stall() { stall_ = true; }
  [[nodiscard]] bool stalled() const { return stalledAt_.load() != 0; }
  /// The number of cycles since the stall ended, and the seconds since then.
  [[nodiscard]] std::uint64_t cyclesSince() const { return cyclesSince_; }
  [[nodiscard]] double secondsSince() const {
    const SteadyClock::duration since(SteadyClock::now().time_since_epoch().count() - stalledAt_.load());
    return std::chrono::duration<double>(since).count();
  }

  void cycle(const hal::IoCycle& cycle) noexcept override {
    if (stall_.exchange(false)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      stalledAt_ = SteadyClock::now().time_since_epoch().count();
    } else if (stalled()) {
      ++cyclesSince_;
    }
    next_.cycle(cycle);
  }
  void overload() noexcept override { next_.overload(); }
  void aliveChanged(bool alive) noexcept override { next_.aliveChanged(alive); }
  void formatChanged(double rateHz, std::uint32_t frames) noexcept override {
    next_.formatChanged(rateHz, frames);
  }

 private:
  hal::SessionClient& next_;
  std::atomic<bool> stall_{false};
  std::atomic<SteadyClock::rep> stalledAt_{0};
  std::atomic<std::uint64_t> cyclesSince_{0};
};

TEST(AlsaStall, IsOneOverloadAndThenGoesOnWithoutABurst) {
  const LoopbackBench bench(SND_PCM_FORMAT_S32_LE, 8);
  const auto driver = hal::makeAlsaDriver();
  const auto device = find(*driver, "alsa:Loopback");
  ASSERT_TRUE(device);
  const std::vector<PatchConnection> routes{{0, 7, 1.0F, true}, {1, 6, 1.0F, true}, {2, 5, 1.0F, true},
                                            {3, 4, 1.0F, true}, {4, 3, 1.0F, true}, {5, 2, 1.0F, true},
                                            {6, 1, 1.0F, true}, {7, 0, 1.0F, true}};
  RoutingClient routing(*device, routes);
  StallingClient client(routing);
  auto started = driver->start(*device, client);
  ASSERT_EQ(started.status, noErr);
  ASSERT_TRUE(eventually([&] { return bench.recorded().good() >= 4800; }));
  const std::uint32_t before = routing.overloads();
  client.stall();
  ASSERT_TRUE(eventually([&] { return client.stalled() && routing.overloads() > before; }));
  const std::uint64_t good = bench.recorded().good();
  EXPECT_TRUE(eventually([&] { return bench.recorded().good() >= good + 48000; }));
  // At most the cycles that fit into the time, plus those in the buffer.
  const std::uint64_t cycles = client.cyclesSince();
  EXPECT_LE(static_cast<double>(cycles), client.secondsSince() * 48000.0 / 256.0 + 4.0);
  EXPECT_TRUE(routing.isAlive());
}

}  // namespace
}  // namespace tolvane::test
