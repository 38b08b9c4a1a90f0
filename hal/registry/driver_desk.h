// Where one driver is asked for its devices without anybody having to wait for a driver that hangs.
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
  std::uint64_t number = 0;  // of the call, from 1 on
  std::uint64_t news = 0;    // that there had been when the driver was called
  Clock::time_point askedAt;
  std::vector<DeviceInfo> devices;
  std::exception_ptr failure;  // set: there is no answer, and this is why
};

/// Asks on a thread of its own, one call at a time. It lives as long as the process.
class DriverDesk final : public DeviceObserver {
 public:
  /// `onNews` is called, on any thread but an IO thread, when asking again would bring something new: the
  /// driver says so, or the answer to an overdue call came.
  DriverDesk(std::unique_ptr<Driver> driver, std::function<void()> onNews);

  [[nodiscard]] Driver& driver() const noexcept { return *driver_; }

  /// What ask() gives for answer().
  struct Ticket {
    std::uint64_t call = 0;      // whose answer is wanted, by number
    std::uint64_t underWay = 0;  // the call that was under way when it was asked for; 0 for none
    bool isOverdue = false;      // not waited for
  };

  /// Has the driver called after this moment, and returns at once. Two exceptions: the driver is not called
  /// while a call is overdue; and the answer of a call that was overdue is had, once, without calling.
  /// Where there is no thread to call it on, the answer is a failure. [not-io]
  Ticket ask();

  /// The answer for the ticket, or a later one. When it has not come by `deadline`, that of the call that was
  /// under way, if it has come, since a driver that has two calls to answer may take twice its time; else
  /// null. [not-io]
  std::shared_ptr<const DriverAnswer> answer(const Ticket& ticket, Clock::time_point deadline);

  /// How often there has been news. [any-thread]
  [[nodiscard]] std::uint64_t news() const noexcept { return news_.load(); }

  /// Somebody has given up waiting for a call that has not ended yet. [not-io]
  [[nodiscard]] bool overdue() const;

  /// The driver tells of changes by itself. [any-thread]
  [[nodiscard]] bool notifies() const noexcept { return notifies_.load(); }

  void devicesChanged(Driver& driver) noexcept override;

 private:
  [[nodiscard]] bool calling() const noexcept { return begun_ > done_; }
  void work();
  void callDriver(DriverAnswer& answer);
  void finish(DriverAnswer answer);

  const std::unique_ptr<Driver> driver_;
  const std::function<void()> onNews_;
  std::atomic<std::uint64_t> news_{0};
  std::atomic<bool> notifies_{false};

  mutable std::mutex mutex_;  // never held while the driver is called
  std::condition_variable changed_;
  bool working_ = false;      // the thread has been made
  std::uint64_t wanted_ = 0;  // calls asked for, begun and done, by number
  std::uint64_t begun_ = 0;
  std::uint64_t done_ = 0;
  bool overdue_ = false;     // somebody gave up waiting for the call that is under way
  bool lateAnswer_ = false;  // answer_ came after that and nobody has had it
  std::shared_ptr<const DriverAnswer> answer_;

  bool observes_ = false;  // the calling thread's own: the driver knows whom to tell
};

}  // namespace tolvane::hal
