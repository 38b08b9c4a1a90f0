#pragma once

#include <csignal>
#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

#include "ctl/wake_pipe.h"

namespace tolvane::ctl {

/// Turns signals into something to poll. One at a time in the process. [main-thread]
///
/// From construction on the signals are caught, and held back in this thread and in every thread it starts,
/// so that no IO thread ever runs the handler; admit() lets them through in this thread.
class SignalPipe {
 public:
  SignalPipe(std::initializer_list<int> signals);
  SignalPipe(const SignalPipe&) = delete;
  SignalPipe& operator=(const SignalPipe&) = delete;
  /// Puts back what was.
  ~SignalPipe();

  void admit();

  /// To be polled for reading.
  [[nodiscard]] int descriptor() const noexcept { return pipe_.descriptor(); }

  /// The next signal that came, or none.
  [[nodiscard]] std::optional<int> next() const noexcept;

 private:
  WakePipe pipe_;
  sigset_t signals_;
  sigset_t maskBefore_;
  std::vector<std::pair<int, struct sigaction>> actionsBefore_;
};

}  // namespace tolvane::ctl
