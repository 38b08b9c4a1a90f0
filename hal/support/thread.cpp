#include "hal/support/thread.h"

#include <new>
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

bool runDetached(const char* name, std::function<void()> work) {
  const SignalsBlocked blocked;
  try {
    std::thread thread([name, work = std::move(work)] {
      pthread_setname_np(pthread_self(), name);
      work();
    });
    thread.detach();
    return true;
  } catch (const std::system_error&) {
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

std::system_error noThreadLeft() {
  return {std::make_error_code(std::errc::resource_unavailable_try_again), "no thread is left"};
}

}  // namespace tolvane::hal
