#include "hal/registry/registration.h"

#include <utility>

#include "hal/driver/time_limits.h"

namespace tolvane::hal {

namespace {

using namespace std::chrono_literals;

constexpr auto kRetryInterval = 500ms;
constexpr auto kResumeLimit = 200ms;  // how long a session may take to resume once its device is listed

}  // namespace

Registration::Registration(std::shared_ptr<Device> device, AudioDeviceIOProc proc, void* clientData)
    : device_(std::move(device)), proc_(proc), clientData_(clientData) {}

Registration::RunRef Registration::newRun() {
  const DeviceInfo actual = device_->info();
  if (starting_) promised_ = actual;
  return std::make_shared<Run>(device_, Callback{device_->id(), proc_, clientData_}, promised_, actual);
}

OSStatus Registration::start(Clock::time_point deadline) {
  RunRef run;
  {
    const std::lock_guard lock(mutex_);
    if (wanted_) return noErr;
    if (!device_->listedAt()) {
      return device_->poller()->overdue() ? kAudioHardwareNotReadyError : kAudioHardwareBadDeviceError;
    }
    wanted_ = starting_ = true;
    lostAt_.reset();
    run = run_ = newRun();
  }
  run->begin();
  run->waitBegun(deadline);
  const OSStatus status = startedStatus(run);
  if (status != noErr) {
    run->end();
    run->waitSilent();
  }
  return status;
}

OSStatus Registration::startedStatus(const RunRef& run) {
  const std::lock_guard lock(mutex_);
  if (run_ != run) return kAudioHardwareNotRunningError;
  starting_ = false;
  const Run::State state = run->state();
  if (state == Run::State::running) return noErr;
  wanted_ = false;
  retireRun(Clock::now());
  return state == Run::State::failed ? run->status() : kAudioHardwareNotReadyError;
}

void Registration::stop() {
  const std::lock_guard oneStop(stopping_);
  const auto deadline = Clock::now() + kStopLimit;
  RunRef run;
  RunRef outgoing;
  {
    const std::lock_guard lock(mutex_);
    wanted_ = starting_ = false;
    run = std::move(run_);
    outgoing = std::move(outgoing_);
  }
  if (run) run->end();
  for (const RunRef& ending : {outgoing, run}) {
    if (!ending) continue;
    ending->waitSilent();
    ending->waitOver(deadline);
  }
}

void Registration::abandon() {
  RunRef run;
  {
    const std::lock_guard lock(mutex_);
    wanted_ = starting_ = false;
    run = run_;
  }
  if (run) run->end();
}

void Registration::waitAbandoned(Clock::time_point deadline) {
  RunRef run;
  {
    const std::lock_guard lock(mutex_);
    run = run_;
  }
  if (!run) return;
  run->waitSilent(deadline);
  run->waitOver(deadline);
}

Registration::Presence Registration::presence() const {
  const std::lock_guard lock(mutex_);
  if (!wanted_ || starting_) return Presence::idle;
  const bool there = run_ && run_->state() == Run::State::running && run_->alive();
  return there ? Presence::there : Presence::lost;
}

pid_t Registration::ioThread() const {
  if (presence() != Presence::there) return 0;
  const std::lock_guard lock(mutex_);
  return run_ ? run_->ioThread() : 0;
}

std::optional<bool> Registration::isMemoryLocked() const {
  if (presence() != Presence::there) return std::nullopt;
  const std::lock_guard lock(mutex_);
  return run_ ? run_->isMemoryLocked() : std::nullopt;
}

void Registration::supervise(Clock::time_point now) {
  if (const RunRef retired = superviseRun(now)) retired->end();
}

/// Returns the run that it has retired, if any.
Registration::RunRef Registration::superviseRun(Clock::time_point now) {
  const std::lock_guard lock(mutex_);
  if (!wanted_ || starting_) return nullptr;
  if (run_) return checkRun(now) ? nullptr : retireRun(now);
  if (now < retryAt_ || !device_->listedAt() || outgoingBlocks(now)) return nullptr;
  run_ = newRun();
  begunAt_ = now;
  run_->begin();
  return nullptr;
}

/// False if the run must be replaced.
bool Registration::checkRun(Clock::time_point now) {
  switch (run_->state()) {
    case Run::State::running:
      return checkSession(now);
    case Run::State::starting:
      if (now - begunAt_ < kStartLimit) return true;
      [[fallthrough]];
    default:
      retryAt_ = now + kRetryInterval;
      return false;
  }
}

/// A session may resume by itself when its device is back. False if it does not.
bool Registration::checkSession(Clock::time_point now) {
  if (run_->alive()) {
    lostAt_.reset();
  } else if (!lostAt_) {
    lostAt_ = now;
    backAt_.reset();
  } else if (!listedAgain()) {
    // A driver that is late has not said that the device is gone again.
    if (!device_->poller()->late()) backAt_.reset();
  } else if (!backAt_) {
    backAt_ = now;
  } else {
    return now - *backAt_ < kResumeLimit;
  }
  return true;
}

/// True if the driver named the device in an answer that it began after the loss.
bool Registration::listedAgain() const {
  const auto listedAt = device_->listedAt();
  return listedAt && *listedAt > *lostAt_;
}

bool Registration::outgoingBlocks(Clock::time_point now) const {
  if (!outgoing_ || outgoing_->state() == Run::State::over) return false;
  return outgoing_->inCallback() || now - outgoingSince_ < kOutgoingLimit;
}

/// The run's callback does not begin again. The caller ends the run once it has released the mutex: if there
/// is no thread left for that, a hung driver holds the caller.
Registration::RunRef Registration::retireRun(Clock::time_point now) {
  run_->shutGate();
  outgoing_ = std::exchange(run_, nullptr);
  outgoingSince_ = now;
  return outgoing_;
}

}  // namespace tolvane::hal
