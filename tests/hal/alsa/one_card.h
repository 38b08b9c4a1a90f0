// A machine with one sound card, whose PCMs are the null plug-in's.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "hal/alsa/alsa_driver.h"
#include "hal/alsa/library.h"

namespace tolvane::test {

/// The machine and an ALSA driver on it. At most one may exist at a time.
class OneCard {
 public:
  static constexpr int kNumber = 31;

  OneCard();
  OneCard(const OneCard&) = delete;
  OneCard& operator=(const OneCard&) = delete;
  ~OneCard() = default;

  [[nodiscard]] hal::Driver& driver() const { return *driver_; }
  /// The listed device.
  [[nodiscard]] hal::DeviceInfo card() const { return driver_->devices().at(0); }

  std::atomic<bool> isThere{true};
  std::atomic<bool> isHeld{false};     // another program has opened it
  std::atomic<bool> isServers{false};  // and it is a sound server

 private:
  const hal::alsa::Library alsa_;
  const std::unique_ptr<hal::Driver> driver_;
};

/// Takes a millisecond for each cycle. No clock paces the null plug-in, and a real-time thread that never
/// sleeps would keep all other programs from its processor for most of a second.
class DeafClient final : public hal::SessionClient {
 public:
  void cycle(const hal::IoCycle& /*cycle*/) noexcept override {
    ++cycles;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  void overload() noexcept override { ++overloads; }
  void aliveChanged(bool isAlive) noexcept override { alive = isAlive; }
  void formatChanged(double /*rateHz*/, std::uint32_t /*frames*/) noexcept override {}

  void memoryLocked(bool isLocked) noexcept override { locked = isLocked; }

  std::atomic<bool> locked{false};
  std::atomic<int> cycles{0};
  std::atomic<int> overloads{0};
  std::atomic<bool> alive{true};
};

}  // namespace tolvane::test
