#include "hal/support/thread.h"

#include <system_error>
#include <thread>
#include <utility>

#include <pthread.h>

namespace tolvane::hal {

SignalsBlocked::SignalsBlocked() noexcept {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before_);
}

SignalsBlocked::~SignalsBlocked() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void runDetached(const char* name, std::function<void()> work) {
  const SignalsBlocked blocked;
  try {
    std::thread thread([name, work] {
      pthread_setname_np(pthread_self(), name);
      work();
    });
    thread.detach();
  } catch (const std::system_error&) {
    work();
  }
}

}  // namespace tolvane::hal
