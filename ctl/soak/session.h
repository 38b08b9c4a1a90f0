#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "ctl/devices/events.h"
#include "ctl/process/signal_pipe.h"
#include "ctl/publication/publication.h"
#include "ctl/run/io_thread.h"
#include "ctl/soak/checker.h"
#include "ctl/soak/options.h"
#include "ctl/soak/random_edits.h"
#include "ctl/soak/report.h"
#include "engine/core_audio_engine.h"

namespace tolvane::ctl {

/// One soak, from the start to its result. [main-thread]
class SoakSession {
 public:
  /// `signals` belongs to the caller and must outlive the session.
  SoakSession(const SoakOptions& options, const AudioDeviceInfo& device, const SignalPipe& signals);
  SoakSession(const SoakSession&) = delete;
  SoakSession& operator=(const SoakSession&) = delete;
  ~SoakSession();

  /// Runs until the time is up or a signal ends it. Failure: the device does not start.
  [[nodiscard]] std::optional<Failure> run();

  [[nodiscard]] const SoakResult& result() const noexcept { return result_; }
  [[nodiscard]] const SoakChecker& checker() const noexcept { return checker_; }

 private:
  using Clock = std::chrono::steady_clock;

  void publish(std::span<const PatchConnection> routes);
  void sleep();
  void handleSignals();
  void handleDevice();
  void edit();
  void takeMoment();
  void conclude();
  [[nodiscard]] double audioSeconds() const noexcept;
  [[nodiscard]] double soakSeconds() const noexcept;

  const SoakOptions options_;
  const AudioDeviceInfo device_;
  const SignalPipe& signals_;
  SoakResult result_;
  SoakChecker checker_;
  RandomEdits edits_;
  CoreAudioEngine engine_;
  Publication publication_;
  DeviceEvents events_;
  Clock::time_point started_;
  std::optional<double> searchedUntil_;  // in seconds of audio; none: the search for loops goes on
  double nextMoment_ = 0.0;              // in seconds of the soak
  bool ended_ = false;
  bool deviceTold_ = false;
  bool wasAlive_ = true;
};

}  // namespace tolvane::ctl
