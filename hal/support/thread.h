// Threads of the HAL's own. None of them takes the program's signals.
#pragma once

#include <csignal>
#include <functional>

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

/// Runs `work` on a thread that nobody waits for; on the calling thread when the system has no thread to
/// give. `name` (at most 15 bytes) is what debuggers and monitors show. [not-io]
void runDetached(const char* name, std::function<void()> work);

}  // namespace tolvane::hal
