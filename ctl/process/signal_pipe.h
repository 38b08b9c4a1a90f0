#pragma once

#include <condition_variable>
#include <csignal>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <thread>

#include "ctl/process/early_end.h"
#include "ctl/process/wake_pipe.h"

namespace tolvane::ctl {

/// Delivers signals through a descriptor, so that a command can end in an orderly way. At most one object may
/// exist at a time. [main-thread]
///
/// A thread of its own receives the signals. They are blocked in the constructing thread and in every thread
/// that it starts, so an IO thread never runs a signal handler. Every signal but SIGHUP asks the command to
/// end. If the object still exists kGrace later, because the command is stuck, the signal ends the process.
class SignalPipe {
 public:
  /// Throws std::system_error if no thread or descriptor is left.
  SignalPipe(std::initializer_list<int> signals);
  SignalPipe(const SignalPipe&) = delete;
  SignalPipe& operator=(const SignalPipe&) = delete;
  /// Restores the signal mask and drops pending signals of the set.
  ~SignalPipe();

  /// For poll(): readable when there is a signal.
  [[nodiscard]] int descriptor() const noexcept { return pipe_.descriptor(); }

  /// The next signal, or none. A SIGHUP caused by closing the program's terminal is returned as SIGTERM.
  [[nodiscard]] std::optional<int> next() const noexcept;

 private:
  void takeSignals();
  void giveGrace(int signal);
  void dropPending() const noexcept;

  WakePipe pipe_;
  sigset_t signals_;
  SignalsHeld held_;
  bool endsWithTerminal_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ended_ = false;
  std::thread thread_;
};

}  // namespace tolvane::ctl
