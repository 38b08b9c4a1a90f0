#include "ctl/process/early_end.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <new>
#include <system_error>

#include <pthread.h>
#include <sys/uio.h>
#include <unistd.h>

#include "ctl/terminal/exit_status.h"

namespace tolvane::ctl {

namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// Signal handlers read the path, so it has a fixed buffer. It is complete while the flag is set.
char pathToRemove[PATH_MAX];
std::atomic<bool> hasPathToRemove{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler reads it");

void removeFile() noexcept {
  if (hasPathToRemove) ::unlink(pathToRemove);
}

extern "C" void endByCaughtSignal(int signal) {
  endBySignal(signal);
}

bool isIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

[[noreturn]] void endByException() noexcept {
  try {
    if (const auto exception = std::current_exception()) std::rethrow_exception(exception);
  } catch (const std::bad_alloc&) {
    endForWantOf("out of memory");
  } catch (const std::system_error& error) {
    endForWantOf(error.what());
  } catch (...) {
    std::abort();
  }
  std::abort();
}

}  // namespace

void prepareForEarlyEnds() {
  std::set_terminate(&endByException);
  std::signal(SIGPIPE, SIG_IGN);
  sigset_t caught;
  sigemptyset(&caught);
  for (const int signal : kEndingSignals) {
    sigaddset(&caught, signal);
    if (!isIgnored(signal)) std::signal(signal, &endByCaughtSignal);
  }
  ::pthread_sigmask(SIG_UNBLOCK, &caught, nullptr);
}

void removeAtEarlyEnd(const char* path) noexcept {
  hasPathToRemove = false;
  if (path == nullptr || std::strlen(path) >= sizeof pathToRemove) return;
  std::memcpy(pathToRemove, path, std::strlen(path) + 1);
  hasPathToRemove = true;
}

void endBySignal(int signal) noexcept {
  removeFile();
  std::signal(signal, SIG_DFL);
  sigset_t only;
  sigemptyset(&only);
  sigaddset(&only, signal);
  ::pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
  ::raise(signal);
  ::_exit(128 + signal);  // not reached: the signal's default action ends the process
}

void endForWantOf(const char* what) noexcept {
  removeFile();
  const iovec parts[] = {{const_cast<char*>("tolvanectl: "), 12},
                         {const_cast<char*>(what), std::strlen(what)},
                         {const_cast<char*>("\n"), 1}};
  [[maybe_unused]] const auto written = ::writev(STDERR_FILENO, parts, std::size(parts));
  ::_exit(static_cast<int>(ExitStatus::failed));
}

SignalsHeld::SignalsHeld() noexcept : before_{} {
  sigset_t all;
  sigfillset(&all);
  ::pthread_sigmask(SIG_BLOCK, &all, &before_);
}

SignalsHeld::SignalsHeld(std::initializer_list<int> signals) noexcept : before_{} {
  sigset_t held;
  sigemptyset(&held);
  for (const int signal : signals) sigaddset(&held, signal);
  ::pthread_sigmask(SIG_BLOCK, &held, &before_);
}

SignalsHeld::~SignalsHeld() {
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace tolvane::ctl
