// How the process ends in the middle of its work: by a signal, or because memory, threads or descriptors ran
// out.
#pragma once

#include <csignal>
#include <initializer_list>

namespace tolvane::ctl {

/// Called once, before any thread starts. From then on:
/// - SIGINT, SIGTERM, SIGHUP and SIGQUIT end the process at once and leave no file behind, even if the parent
///   process had blocked them. A signal that the parent set to be ignored (as nohup does) stays ignored.
/// - Writing to a pipe without a reader returns an error; SIGPIPE is ignored.
/// - An uncaught std::bad_alloc or std::system_error ends the process through endForWantOf(). Any other
///   uncaught exception aborts.
/// [main-thread]
void prepareForEarlyEnds();

/// Sets the file to remove if the process ends early; null: none. Copies `path`. A path of PATH_MAX bytes or
/// more is not removed. [not-io, one thread at a time]
void removeAtEarlyEnd(const char* path) noexcept;

/// Removes the file that is set and ends the process by the signal's default action. Safe in a signal
/// handler. [any-thread]
[[noreturn]] void endBySignal(int signal) noexcept;

/// Removes the file that is set, prints one message and ends the process with ExitStatus::failed. Allocates
/// no memory. [any-thread]
[[noreturn]] void endForWantOf(const char* what) noexcept;

/// Blocks signals for its lifetime, in the calling thread and in the threads that it starts meanwhile.
/// [any-thread]
class SignalsHeld {
 public:
  /// Blocks every signal.
  SignalsHeld() noexcept;
  SignalsHeld(std::initializer_list<int> signals) noexcept;
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld();

 private:
  sigset_t before_;
};

}  // namespace tolvane::ctl
