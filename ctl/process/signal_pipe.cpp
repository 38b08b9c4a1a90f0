#include "ctl/process/signal_pipe.h"

#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

namespace tolvane::ctl {

namespace {

/// Long enough for a device to stop on a machine that stalls briefly, and short enough for the program to end
/// within a second of the signal.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::chrono::milliseconds kGrace{8000};  // a sanitizer makes everything many times slower
#else
constexpr std::chrono::milliseconds kGrace{800};
#endif

/// True if the process has a controlling terminal that is still open.
bool hasTerminal() {
  const int terminal = ::open("/dev/tty", O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (terminal < 0) return errno != ENXIO && errno != EIO && errno != ENOENT;
  ::close(terminal);
  return true;
}

bool isHangupIgnored() {
  struct sigaction action {};
  return ::sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t setOf(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  return set;
}

/// Starts a thread with every signal blocked. It receives only those that it waits for.
template <class Work>
std::thread threadWithoutSignals(Work work) {
  const SignalsHeld held;
  return std::thread(work);
}

}  // namespace

SignalPipe::SignalPipe(std::initializer_list<int> signals)
    : signals_(setOf(signals)),
      held_(signals),
      // A program that shall outlive its terminal is started with SIGHUP ignored, as nohup does.
      endsWithTerminal_(!isHangupIgnored() && hasTerminal()),
      thread_(threadWithoutSignals([this] { takeSignals(); })) {}

SignalPipe::~SignalPipe() {
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  changed_.notify_all();
  for (int signal = 1; signal < NSIG; ++signal) {
    if (sigismember(&signals_, signal) != 1) continue;
    ::pthread_kill(thread_.native_handle(), signal);  // wakes it from sigwait
    break;
  }
  thread_.join();
  dropPending();
}

std::optional<int> SignalPipe::next() const noexcept {
  return pipe_.next();
}

void SignalPipe::takeSignals() {
  for (;;) {
    int signal = 0;
    sigwait(&signals_, &signal);
    {
      const std::lock_guard lock(mutex_);
      if (ended_) return;
    }
    if (signal == SIGHUP && endsWithTerminal_ && !hasTerminal()) signal = SIGTERM;
    pipe_.wake(static_cast<unsigned char>(signal));
    if (signal != SIGHUP) return giveGrace(signal);
  }
}

void SignalPipe::giveGrace(int signal) {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, kGrace, [this] { return ended_; })) endBySignal(signal);
}

/// Drops signals that arrived after the one that ended the command: a shell and a service manager may both
/// send one. They would end the process once unblocked.
void SignalPipe::dropPending() const noexcept {
  sigset_t pending;
  sigpending(&pending);
  for (int signal = 1; signal < NSIG; ++signal) {
    if (sigismember(&signals_, signal) != 1 || sigismember(&pending, signal) != 1) continue;
    const sigset_t only = setOf({signal});
    int taken = 0;
    sigwait(&only, &taken);
  }
}

}  // namespace tolvane::ctl
