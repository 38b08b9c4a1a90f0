// Asks one driver for its devices, so that nobody has to wait for a driver that hangs.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "hal/driver/driver.h"

namespace tolvane::hal {

using Clock = std::chrono::steady_clock;

/// One answer of a driver.
struct DriverAnswer {
  std::uint64_t number = 0;      // of the call, from 1
  std::uint64_t generation = 0;  // generation that it includes
  Clock::time_point askedAt;
  std::vector<DeviceInfo> devices;
  std::exception_ptr failure;  // if set, the call failed with this exception
};

/// Calls the driver on a thread of its own, one call at a time. A poller lives as long as the process.
class DriverPoller final : public DeviceObserver {
 public:
  /// `onChange` is called when asking again would give something new: the driver reported a change, or an
  /// overdue call has ended. Called on any thread except an IO thread.
  DriverPoller(std::unique_ptr<Driver> driver, std::function<void()> onChange);

  [[nodiscard]] Driver& driver() const noexcept { return *driver_; }

  /// Made by ask() for answer().
  struct Ticket {
    std::uint64_t call = 0;      // number of the call whose answer is wanted
    std::uint64_t underWay = 0;  // the call that was under way at ask(); 0 for none
    bool isOverdue = false;      // an overdue call; answer() does not wait for it
  };

  /// Requests a call of the driver that begins after this moment, and returns at once. Two exceptions: while
  /// a call is overdue, there is no new call; and once an overdue call has ended, its answer is given once
  /// without a new call. If the calling thread cannot be created, the answer is a failure. [not-io]
  Ticket ask();

  /// Returns the answer for the ticket, or a later one. If there is none by `deadline`, returns the answer of
  /// the call that was under way, if that has ended, since a driver with two calls to serve may take twice
  /// its time. Otherwise returns null. [not-io]
  std::shared_ptr<const DriverAnswer> answer(const Ticket& ticket, Clock::time_point deadline);

  /// The number of changes so far: those that the driver reported, and late answers. [any-thread]
  [[nodiscard]] std::uint64_t generation() const noexcept { return generation_.load(); }

  /// True if a caller has given up waiting for a call that has not ended yet. [not-io]
  [[nodiscard]] bool overdue() const;

  /// True if a call is overdue, or has ended and nobody has taken its answer. [not-io]
  [[nodiscard]] bool late() const;

  /// Waits until no call is overdue. False if one still is at the deadline. [not-io]
  [[nodiscard]] bool awaitOverdue(Clock::time_point deadline);

  void devicesChanged(Driver& driver) noexcept override;

 private:
  [[nodiscard]] bool calling() const noexcept { return begun_ > done_; }
  void work();
  void callDriver(DriverAnswer& answer);
  void countLateAnswer(std::uint64_t& generation) noexcept;
  void finish(DriverAnswer answer);

  const std::unique_ptr<Driver> driver_;
  const std::function<void()> onChange_;
  std::atomic<std::uint64_t> generation_{0};

  mutable std::mutex mutex_;  // never held while the driver is called
  std::condition_variable changed_;
  bool working_ = false;      // the thread exists
  std::uint64_t wanted_ = 0;  // number of the last call asked for; the next two: begun, done
  std::uint64_t begun_ = 0;
  std::uint64_t done_ = 0;
  bool overdue_ = false;     // a caller gave up waiting for the call under way
  bool lateAnswer_ = false;  // answer_ came after that, and no caller has taken it
  std::shared_ptr<const DriverAnswer> answer_;

  bool observes_ = false;  // used by the calling thread only: setObserver() has been called
};

}  // namespace tolvane::hal
