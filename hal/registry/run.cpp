#include "hal/registry/run.h"

#include <cstring>
#include <utility>

#include <unistd.h>

#include "base/thread_check.h"
#include "hal/support/exhaustion.h"
#include "hal/support/thread.h"

namespace tolvane::hal {

namespace {

thread_local bool inCallbackHere = false;

void clear(AudioBufferList& output) noexcept {
  for (UInt32 b = 0; b < output.mNumberBuffers; ++b) {
    const AudioBuffer& buffer = output.mBuffers[b];
    if (buffer.mData != nullptr) std::memset(buffer.mData, 0, buffer.mDataByteSize);
  }
}

}  // namespace

bool onIoThread() noexcept {
  return inCallbackHere;
}

Run::Run(std::shared_ptr<Device> device, const Callback& callback, const DeviceInfo& promised,
         const DeviceInfo& actual)
    : device_(std::move(device)), callback_(callback), actual_(actual), view_(promised, actual) {
  gate_.open();
}

void Run::begin() {
  setState(State::starting);
  if (runDetached("tolvane-start", [self = shared_from_this()] { self->startSession(); })) return;
  status_ = kTolvaneExhaustedError;
  setState(State::failed);
}

void Run::startSession() {
  StartResult result;
  result.status = orExhausted([&] {
    result = device_->poller()->driver().start(actual_, *this);
    return result.status;
  });
  if (result.status == noErr && !result.session) result.status = kAudioHardwareUnspecifiedError;
  std::unique_lock lock(mutex_);
  status_ = result.status;
  if (state_ != State::starting) {  // ended meanwhile
    lock.unlock();
    endSession(std::move(result.session));
    return;
  }
  session_ = std::move(result.session);
  state_ = result.status == noErr ? State::running : State::failed;
  lock.unlock();
  changed_.notify_all();
}

bool Run::waitBegun(Clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  return changed_.wait_until(lock, deadline, [this] { return state_ != State::starting; });
}

void Run::end() {
  shutGate();
  std::unique_lock lock(mutex_);
  const State before = std::exchange(state_, State::ending);
  if (before == State::ending || before == State::over) {
    state_ = before;
    return;
  }
  lock.unlock();
  changed_.notify_all();
  device_->forgetSession(this);
  if (before == State::starting) return;  // startSession() ends the session when the driver returns
  // Only the thread that destroys the session takes it: the driver may block that thread.
  const bool isLeft = before != State::failed && runDetached("tolvane-stop", [self = shared_from_this()] {
                        self->endSession(self->takeSession());
                      });
  if (!isLeft) endSession(takeSession());
}

std::unique_ptr<Session> Run::takeSession() {
  const std::lock_guard lock(mutex_);
  return std::move(session_);
}

void Run::endSession(std::unique_ptr<Session> session) {
  session.reset();
  setState(State::over);
}

bool Run::waitOver(Clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  return changed_.wait_until(lock, deadline, [this] { return state_ == State::over; });
}

Run::State Run::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

OSStatus Run::status() const {
  const std::lock_guard lock(mutex_);
  return status_;
}

void Run::setState(State state) {
  {
    const std::lock_guard lock(mutex_);
    state_ = state;
  }
  changed_.notify_all();
}

void Run::cycle(const IoCycle& cycle) noexcept {
  const CallGate::Pass pass(gate_);
  if (!pass) {
    clear(*cycle.output);
    return;
  }
  const IoCycle& seen = view_.show(cycle);
  // The only system call in the cycles of a session. The driver may not know the thread, since a library may
  // own it.
  if (ioThread_.load(std::memory_order_relaxed) == 0) ioThread_.store(gettid());
  const IoCallbackScope scope;
  inCallbackHere = true;
  callback_.proc(callback_.device, seen.now, seen.input, seen.inputTime, seen.output, seen.outputTime,
                 callback_.clientData);
  inCallbackHere = false;
}

void Run::overload() noexcept {
  if (const CallGate::Pass pass(gate_); pass) device_->countOverload();
}

void Run::aliveChanged(bool alive) noexcept {
  alive_.store(alive);
}

void Run::formatChanged(double sampleRateHz, std::uint32_t bufferFrames) noexcept {
  if (const CallGate::Pass pass(gate_); pass) device_->sessionFormat(this, sampleRateHz, bufferFrames);
}

void Run::linksRemoved(const RemovedLinks& removed) {
  if (const CallGate::Pass pass(gate_); pass) device_->sessionLinks(this, removed);
}

void Run::memoryLocked(bool isLocked) noexcept {
  memory_.store(isLocked ? Memory::locked : Memory::notLocked);
}

std::optional<bool> Run::isMemoryLocked() const noexcept {
  const Memory memory = memory_.load();
  return memory == Memory::unknown ? std::nullopt : std::optional(memory == Memory::locked);
}

}  // namespace tolvane::hal
