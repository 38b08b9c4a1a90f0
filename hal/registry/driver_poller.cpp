#include "hal/registry/driver_poller.h"

#include <system_error>
#include <thread>
#include <utility>

#include "hal/support/thread.h"

namespace tolvane::hal {

namespace {

// Pause before the next call of a driver whose server has not answered yet.
constexpr std::chrono::milliseconds kSilenceInterval{20};

}  // namespace

DriverPoller::DriverPoller(std::unique_ptr<Driver> driver, std::function<void()> onChange)
    : driver_(std::move(driver)), onChange_(std::move(onChange)) {}

DriverPoller::Ticket DriverPoller::ask() {
  const std::lock_guard lock(mutex_);
  if (std::exchange(lateAnswer_, false)) return {done_, 0};
  if (overdue_) return {begun_, 0, true};
  wanted_ = begun_ + 1;  // a call under way may predate a change that the caller knows of
  if (!working_) working_ = runDetached("tolvane-driver", [this] { work(); });
  if (!working_) {
    DriverAnswer none;
    none.number = done_ = ++begun_;
    none.generation = generation_.load();
    none.failure = std::make_exception_ptr(noThreadLeft());
    answer_ = std::make_shared<const DriverAnswer>(std::move(none));
  }
  changed_.notify_all();
  return {wanted_, calling() ? begun_ : 0};
}

std::shared_ptr<const DriverAnswer> DriverPoller::answer(const Ticket& ticket, Clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  const auto isDone = [&] { return done_ >= ticket.call; };
  if (ticket.isOverdue ? isDone() : changed_.wait_until(lock, deadline, isDone)) return answer_;
  overdue_ = true;
  return ticket.underWay != 0 && done_ >= ticket.underWay ? answer_ : nullptr;
}

bool DriverPoller::overdue() const {
  const std::lock_guard lock(mutex_);
  return overdue_;
}

bool DriverPoller::late() const {
  const std::lock_guard lock(mutex_);
  return overdue_ || lateAnswer_;
}

bool DriverPoller::awaitOverdue(Clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  return changed_.wait_until(lock, deadline, [this] { return !overdue_; });
}

void DriverPoller::devicesChanged(Driver& /*driver*/) noexcept {
  generation_.fetch_add(1);
  onChange_();
}

void DriverPoller::work() {
  for (;;) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return done_ < wanted_; });
    DriverAnswer answer;
    answer.number = ++begun_;
    lock.unlock();
    try {
      callDriver(answer);
    } catch (const std::bad_alloc&) {
      answer.failure = std::current_exception();
    } catch (const std::system_error&) {
      answer.failure = std::current_exception();
    }
    finish(std::move(answer));
  }
}

void DriverPoller::callDriver(DriverAnswer& answer) {
  if (!observes_) driver_->setObserver(*this);
  observes_ = true;
  for (bool isAgain = false;; isAgain = true) {
    if (isAgain) std::this_thread::sleep_for(kSilenceInterval);
    answer.generation = generation_.load();
    answer.askedAt = Clock::now();
    answer.devices = driver_->devices();
    if (!driver_->awaitsServer()) break;
  }
}

/// A late answer is a change that it includes itself: once it is taken, there is no reason to ask again. If
/// the driver has reported a change since the call, there is, and somebody will take the answer first.
void DriverPoller::countLateAnswer(std::uint64_t& generation) noexcept {
  std::uint64_t expected = generation;
  if (generation_.compare_exchange_strong(expected, generation + 1)) ++generation;
}

void DriverPoller::finish(DriverAnswer answer) {
  bool late = false;
  {
    const std::lock_guard lock(mutex_);
    done_ = answer.number;
    late = std::exchange(overdue_, false);
    if (late) {
      lateAnswer_ = true;
      countLateAnswer(answer.generation);
    }
    answer_ = std::make_shared<const DriverAnswer>(std::move(answer));
  }
  changed_.notify_all();
  if (late) onChange_();
}

}  // namespace tolvane::hal
