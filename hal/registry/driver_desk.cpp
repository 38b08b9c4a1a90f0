#include "hal/registry/driver_desk.h"

#include <utility>

#include "hal/support/thread.h"

namespace tolvane::hal {

DriverDesk::DriverDesk(std::unique_ptr<Driver> driver, std::function<void()> onNews)
    : driver_(std::move(driver)), onNews_(std::move(onNews)) {}

DriverDesk::Ticket DriverDesk::ask() {
  const std::lock_guard lock(mutex_);
  if (std::exchange(lateAnswer_, false)) return {done_, 0};
  if (overdueLocked()) return {};
  wanted_ = begun_ + 1;  // a call under way may have looked before the change that the asker knows of
  if (!std::exchange(working_, true)) runDetached("tolvane-driver", [this] { work(); });
  changed_.notify_all();
  return {wanted_, calling() ? begun_ : 0};
}

std::shared_ptr<const DriverAnswer> DriverDesk::answer(const Ticket& ticket, Clock::time_point deadline) {
  if (ticket.call == 0) return nullptr;
  std::unique_lock lock(mutex_);
  if (changed_.wait_until(lock, deadline, [&] { return done_ >= ticket.call; })) return answer_;
  missed_ = true;
  return ticket.underWay != 0 && done_ >= ticket.underWay ? answer_ : nullptr;
}

bool DriverDesk::overdue() const {
  const std::lock_guard lock(mutex_);
  return overdueLocked();
}

bool DriverDesk::overdueLocked() const {
  return calling() && Clock::now() - begunAt_ >= kAnswerLimit;
}

void DriverDesk::devicesChanged(Driver& /*driver*/) noexcept {
  news_.fetch_add(1);
  onNews_();
}

void DriverDesk::work() {
  notifies_.store(driver_->setObserver(*this));
  for (;;) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return done_ < wanted_; });
    ++begun_;
    begunAt_ = Clock::now();
    DriverAnswer answer{begun_, news_.load(), begunAt_, {}, {}};
    lock.unlock();
    answer.devices = driver_->devices();
    answer.server = driver_->server();
    finish(std::move(answer));
  }
}

void DriverDesk::finish(DriverAnswer answer) {
  bool late = false;
  {
    const std::lock_guard lock(mutex_);
    done_ = answer.number;
    answer_ = std::make_shared<const DriverAnswer>(std::move(answer));
    late = std::exchange(missed_, false);
    if (late) lateAnswer_ = true;
  }
  changed_.notify_all();
  if (late) devicesChanged(*driver_);
}

}  // namespace tolvane::hal
