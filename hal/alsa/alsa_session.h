#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

#include "hal/alsa/duplex.h"
#include "hal/driver/driver.h"

namespace tolvane::hal::alsa {

/// What others may know and ask of a session while it is there.
class SessionControl {
 public:
  /// Throws std::system_error. [not-io]
  SessionControl();
  SessionControl(const SessionControl&) = delete;
  SessionControl& operator=(const SessionControl&) = delete;
  ~SessionControl();

  /// The card has gone from under the session, which has let it go. [any-thread]
  [[nodiscard]] bool lost() const noexcept { return lost_.load(); }
  /// Has the session go on with this period. [not-io]
  void setPeriodFrames(unsigned frames) noexcept;

 private:
  friend class AlsaSession;
  void wake() noexcept;

  int wakeFd_;
  std::atomic<bool> stop_{false};
  std::atomic<bool> lost_{false};
  std::atomic<unsigned> periodFrames_{0};  // 0: as it is
};

/// One callback running on a card: its IO thread.
///
/// After an xrun, a suspended machine or a second without a sign of the hardware, which each count as one
/// overload, it starts over: outputs full of silence, inputs empty, and no cycles to make up for those that
/// were missed. A card that has gone, or that cannot be started over, is let go of at once.
class AlsaSession final : public Session {
 public:
  /// `duplex` is configured; `onLost` is called on the IO thread, after the last cycle, when the card has
  /// been let go of. Throws std::system_error. [not-io]
  AlsaSession(std::unique_ptr<Duplex> duplex, SessionClient& client, std::function<void()> onLost);
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
  void lose() noexcept;
  void rest(int timeoutMs) noexcept;

  const std::shared_ptr<SessionControl> control_ = std::make_shared<SessionControl>();
  std::unique_ptr<Duplex> duplex_;
  SessionClient& client_;
  const std::function<void()> onLost_;
  std::uint64_t frame_ = 0;  // the first of the next period
  int failures_ = 0;         // to start over, one after another
  std::thread thread_;
};

}  // namespace tolvane::hal::alsa
