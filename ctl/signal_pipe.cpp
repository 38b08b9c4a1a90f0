#include "ctl/signal_pipe.h"

#include <atomic>

#include <pthread.h>

namespace tolvane::ctl {

namespace {

std::atomic<const WakePipe*> pipeOfHandler{nullptr};
static_assert(std::atomic<const WakePipe*>::is_always_lock_free, "a signal handler reads it");

extern "C" void handleSignal(int signal) {
  if (const WakePipe* pipe = pipeOfHandler.load()) pipe->wake(static_cast<unsigned char>(signal));
}

}  // namespace

SignalPipe::SignalPipe(std::initializer_list<int> signals) : signals_{}, maskBefore_{} {
  pipeOfHandler = &pipe_;
  sigemptyset(&signals_);
  for (const int signal : signals) sigaddset(&signals_, signal);
  pthread_sigmask(SIG_BLOCK, &signals_, &maskBefore_);
  for (const int signal : signals) {
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = &handleSignal;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, &before);
    actionsBefore_.emplace_back(signal, before);
  }
}

SignalPipe::~SignalPipe() {
  for (const auto& [signal, before] : actionsBefore_) sigaction(signal, &before, nullptr);
  pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr);
  pipeOfHandler = nullptr;
}

void SignalPipe::admit() {
  pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
}

std::optional<int> SignalPipe::next() const noexcept {
  return pipe_.next();
}

}  // namespace tolvane::ctl
