// Threads of the HAL's own. None of them takes the program's signals.
#pragma once

#include <csignal>
#include <functional>
#include <system_error>

namespace tolvane::hal {

/// Blocks every signal on the calling thread for its life, so that a thread made meanwhile has all of them
/// blocked from its first moment on. [not-io]
class SignalsBlocked {
 public:
  SignalsBlocked() noexcept;
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked();

 private:
  sigset_t before_{};
};

/// Runs `work` on a thread that nobody waits for; false, and `work` is not run, when the system has no thread
/// to give. `name` (at most 15 bytes) is what debuggers and monitors show. [not-io]
[[nodiscard]] bool runDetached(const char* name, std::function<void()> work);

/// What to throw for that, where no status can be returned. [not-io]
[[nodiscard]] std::system_error noThreadLeft();

}  // namespace tolvane::hal
