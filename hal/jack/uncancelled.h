#pragma once

#include <type_traits>

#include <pthread.h>

namespace tolvane::hal {

/// A callback for libjack that libjack cannot cancel halfway.
///
/// When a client closes, libjack cancels its threads asynchronously, at any instruction. It then waits until
/// they have ended. If the server has died, such a thread may be inside one of our callbacks. Our functions
/// are noexcept or have destructors, and a cancellation inside them would end the process. With this, it
/// takes effect when the callback has returned.
///
/// Works without a system call or a lock, so also in the cycle's callback.
template <class Callback, class Function = decltype(+Callback{})>
class Uncancelled;

template <class Callback, class Result, class... Arguments>
class Uncancelled<Callback, Result (*)(Arguments...)> {
 public:
  /// Has no clean-up of its own, so the cancellation of the thread can pass through it. Nor does
  /// AddressSanitizer mark its frame, for a cancelled thread does not come back to remove the marks.
  [[gnu::no_sanitize_address]] static Result call(Arguments... arguments) {
    int typeBefore = 0;
    int stateBefore = 0;
    // glibc 2.36 cancels a thread that has just disabled cancellation if its type is still asynchronous.
    pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &typeBefore);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &stateBefore);
    if constexpr (std::is_void_v<Result>) {
      run(arguments...);
      restore(stateBefore, typeBefore);
    } else {
      const Result result = run(arguments...);
      restore(stateBefore, typeBefore);
      return result;
    }
  }

 private:
  static void restore(int state, int type) {
    pthread_setcancelstate(state, nullptr);
    pthread_setcanceltype(type, nullptr);
  }

  // Inlined, it would bring its clean-ups into call().
  [[gnu::noinline]] static Result run(Arguments... arguments) noexcept { return Callback{}(arguments...); }
};

/// The function to register with libjack for a lambda without captures.
template <class Callback>
constexpr auto uncancelled(Callback) noexcept {
  return &Uncancelled<Callback>::call;
}

}  // namespace tolvane::hal
