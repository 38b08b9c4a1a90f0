#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

#include "hal/alsa/duplex.h"
#include "hal/alsa/reservation.h"
#include "hal/driver/driver.h"

namespace tolvane::hal::alsa {

/// What other threads can ask and request of a running session.
class SessionControl {
 public:
  /// Throws std::system_error. [not-io]
  SessionControl();
  SessionControl(const SessionControl&) = delete;
  SessionControl& operator=(const SessionControl&) = delete;
  ~SessionControl();

  /// True once the session has lost its card and closed it. [any-thread]
  [[nodiscard]] bool lost() const noexcept { return lost_.load(); }
  /// Makes the session continue with this period. [not-io]
  void setPeriodFrames(unsigned frames) noexcept;

 private:
  friend class AlsaSession;
  void wake() noexcept;

  int wakeFd_;
  std::atomic<bool> stop_{false};
  std::atomic<bool> lost_{false};
  std::atomic<unsigned> periodFrames_{0};  // the requested period; 0: no change
};

/// The IO thread that runs one callback on a card.
///
/// The session starts over after an xrun, after the machine was suspended, and after one second without a
/// sign of the hardware. Each of these counts as one overload. It starts over with outputs full of silence
/// and empty inputs; missed cycles are not made up. If the card has gone or cannot be started over, the
/// session closes it at once.
class AlsaSession final : public Session {
 public:
  /// `duplex` must be configured. `reservation` may be null; the session gives the card back once it has
  /// closed it. Calls `onLost` on the IO thread, after the last cycle, when a lost card has been closed.
  /// Throws std::system_error. [not-io]
  AlsaSession(std::unique_ptr<Duplex> duplex, std::unique_ptr<Reservation> reservation, SessionClient& client,
              std::function<void()> onLost);
  AlsaSession(const AlsaSession&) = delete;
  AlsaSession& operator=(const AlsaSession&) = delete;
  ~AlsaSession() override;

  [[nodiscard]] const std::shared_ptr<SessionControl>& control() const noexcept { return control_; }

 private:
  void run() noexcept;
  int runPeriods() noexcept;
  int runPeriod() noexcept;
  int recover(int error) noexcept;
  int startOver() noexcept;
  int adoptPeriodFrames() noexcept;
  void tellLocked() noexcept;
  void lose() noexcept;
  void rest(int timeoutMs) noexcept;

  const std::shared_ptr<SessionControl> control_ = std::make_shared<SessionControl>();
  const std::unique_ptr<Reservation> reservation_;  // before duplex_: the card is closed, then given back
  std::unique_ptr<Duplex> duplex_;
  SessionClient& client_;
  const std::function<void()> onLost_;
  std::uint64_t frame_ = 0;  // first frame of the next period
  int failures_ = 0;         // consecutive failures to start over
  bool isStackLocked_ = false;
  std::thread thread_;
};

}  // namespace tolvane::hal::alsa
