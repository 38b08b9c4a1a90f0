#include "hal/alsa/alsa_session.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <exception>
#include <system_error>
#include <utility>

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "hal/driver/time_stamp.h"
#include "hal/support/locked_memory.h"
#include "hal/support/realtime_kit.h"
#include "hal/support/thread.h"

namespace tolvane::hal::alsa {

namespace {

constexpr int kSilentHardwareMs = 1000;
constexpr int kRestMs = 20;
constexpr int kMaxFailures = 10;

std::int64_t monotonicNs() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace

SessionControl::SessionControl() : wakeFd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (wakeFd_ < 0) throw std::system_error(errno, std::generic_category());
}

SessionControl::~SessionControl() {
  close(wakeFd_);
}

void SessionControl::setPeriodFrames(unsigned frames) noexcept {
  periodFrames_.store(frames);
  wake();
}

void SessionControl::wake() noexcept {
  eventfd_write(wakeFd_, 1);
}

AlsaSession::AlsaSession(std::unique_ptr<Duplex> duplex, std::unique_ptr<Reservation> reservation,
                         SessionClient& client, std::function<void()> onLost)
    : reservation_(std::move(reservation)),
      duplex_(std::move(duplex)),
      client_(client),
      onLost_(std::move(onLost)) {
  const SignalsBlocked blocked;
  thread_ = std::thread([this] { run(); });
}

AlsaSession::~AlsaSession() {
  control_->stop_.store(true);
  control_->wake();
  thread_.join();
}

void AlsaSession::run() noexcept {
  pthread_setname_np(pthread_self(), "tolvane-alsa");
  requestRealtime();
  const LockedStack stack;
  isStackLocked_ = stack.isLocked();
  tellLocked();
  int error = duplex_->start();
  while (!control_->stop_.load()) {
    if (error == 0) error = runPeriods();
    if (error < 0) error = recover(error);
    if (error < 0) return lose();
  }
  duplex_->stop();
}

int AlsaSession::runPeriods() noexcept {
  const int periods = duplex_->wait(control_->wakeFd_, kSilentHardwareMs);
  if (periods < 0) return periods;
  if (periods == 0) {  // woken by us, or too early by the hardware
    rest(1);
    return adoptPeriodFrames();
  }
  for (int p = 0; p < periods && !control_->stop_.load(); ++p) {
    const int error = runPeriod();
    if (error < 0) return error;
  }
  failures_ = 0;
  return 0;
}

int AlsaSession::runPeriod() noexcept {
  const DuplexFormat& format = duplex_->format();
  const double frameNs = 1e9 / format.rateHz;
  const auto nowNs = static_cast<double>(monotonicNs());
  const auto frame = static_cast<double>(frame_);
  const double period = format.periodFrames;
  // Without outputs, output time is now.
  const double ahead = std::max(period, static_cast<double>(duplex_->outputBufferFrames()));
  const AudioTimeStamp input = timeStamp(frame, static_cast<UInt64>(nowNs - period * frameNs));
  const AudioTimeStamp now = timeStamp(frame + period, static_cast<UInt64>(nowNs));
  const AudioTimeStamp output =
      timeStamp(frame + ahead, static_cast<UInt64>(nowNs + (ahead - period) * frameNs));
  const int readError = duplex_->read();
  if (readError < 0) return readError;
  client_.cycle({&now, &duplex_->input(), &input, &duplex_->output(), &output});
  frame_ += format.periodFrames;
  return duplex_->write();
}

int AlsaSession::recover(int error) noexcept {
  if (error == -ENODEV) return error;
  client_.overload();
  // Resume before anything else: a suspended stream that is dropped no longer knows that its hardware sleeps.
  while (duplex_->resume() == -EAGAIN && !control_->stop_.load()) rest(kRestMs);
  duplex_->stop();
  for (int result = startOver(); !control_->stop_.load(); result = startOver()) {
    if (result == 0 || result == -ENODEV || ++failures_ > kMaxFailures) return result;
    rest(kRestMs);
  }
  return 0;
}

int AlsaSession::startOver() noexcept {
  const int error = duplex_->prepare();
  return error < 0 ? error : duplex_->start();
}

/// Switches to the requested period, if any, which causes a gap.
int AlsaSession::adoptPeriodFrames() noexcept {
  const unsigned wanted = control_->periodFrames_.exchange(0);
  const DuplexFormat before = duplex_->format();
  if (wanted == 0 || wanted == before.periodFrames) return 0;
  duplex_->stop();
  const auto configure = [&](unsigned frames) noexcept {
    try {
      return duplex_->configure(
          {before.inputChannels, before.outputChannels, {before.rateHz, frames, before.periods}});
    } catch (const std::exception&) {
      return -ENOMEM;
    }
  };
  int error = configure(wanted);
  if (error < 0 && error != -ENODEV) error = configure(before.periodFrames);
  if (error < 0) return -ENODEV;  // no buffers to continue with
  client_.formatChanged(duplex_->format().rateHz, duplex_->format().periodFrames);
  tellLocked();
  return duplex_->start();
}

void AlsaSession::tellLocked() noexcept {
  client_.memoryLocked(isStackLocked_ && duplex_->isLocked());
}

void AlsaSession::lose() noexcept {
  // The kernel keeps a card that has gone, and its identity, until everybody has closed it.
  duplex_.reset();
  // Another card may get its number.
  if (reservation_) reservation_->giveBack();
  control_->lost_.store(true);
  client_.aliveChanged(false);
  onLost_();
}

/// Waits while there is nothing to play; a wake-up ends the wait.
void AlsaSession::rest(int timeoutMs) noexcept {
  eventfd_t count = 0;
  if (eventfd_read(control_->wakeFd_, &count) == 0) return;
  pollfd wake{control_->wakeFd_, POLLIN, 0};
  poll(&wake, 1, timeoutMs);
}

}  // namespace tolvane::hal::alsa
