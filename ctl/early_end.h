// How the process ends in the middle of its work: by a signal, or for want of memory, threads or descriptors.
#pragma once

#include <csignal>
#include <initializer_list>

namespace tolvane::ctl {

/// To be called once, before there is any thread. From then on SIGINT, SIGTERM, SIGHUP and SIGQUIT end the
/// process at once and leave no file behind, also those that the parent had blocked; one that the parent
/// ignores (as nohup does) stays ignored. A write that nobody reads is an error instead of a signal. An
/// exception that no thread catches ends the process as endForWantOf does, where it says that the system has
/// no more to give. [main-thread]
void prepareForEarlyEnds();

/// The file that must not stay when the process ends early; null: none. `path` is copied, and is not removed
/// when it is longer than the system's longest. [main-thread]
void removeAtEarlyEnd(const char* path) noexcept;

/// Ends the process as the signal would have done of itself. Safe in a signal handler. [any-thread]
[[noreturn]] void endBySignal(int signal) noexcept;

/// Ends the process with ExitStatus::failed after one message. Allocates nothing. [any-thread]
[[noreturn]] void endForWantOf(const char* what) noexcept;

/// Holds signals back in the calling thread, and in those that it starts meanwhile, for its life.
/// [any-thread]
class SignalsHeld {
 public:
  /// Every signal.
  SignalsHeld() noexcept;
  SignalsHeld(std::initializer_list<int> signals) noexcept;
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld();

 private:
  sigset_t before_;
};

}  // namespace tolvane::ctl
