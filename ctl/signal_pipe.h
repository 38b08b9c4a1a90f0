#pragma once

#include <condition_variable>
#include <csignal>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <thread>

#include "ctl/early_end.h"
#include "ctl/wake_pipe.h"

namespace tolvane::ctl {

/// Turns signals into something to poll, for a command that ends in an orderly way. One at a time in the
/// process. [main-thread]
///
/// From construction on a thread of its own takes the signals; they are blocked in this thread and in every
/// thread that it starts, so that no IO thread ever runs a handler. Every signal but SIGHUP asks the process
/// to end: where the command has not ended kGrace later, whatever it waits for, the signal ends the process.
class SignalPipe {
 public:
  /// Throws std::system_error when there is no thread or no descriptor left.
  SignalPipe(std::initializer_list<int> signals);
  SignalPipe(const SignalPipe&) = delete;
  SignalPipe& operator=(const SignalPipe&) = delete;
  /// Puts back what was.
  ~SignalPipe();

  /// To be polled for reading.
  [[nodiscard]] int descriptor() const noexcept { return pipe_.descriptor(); }

  /// The next signal that came, or none. A SIGHUP because the program's terminal was closed comes as SIGTERM.
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
