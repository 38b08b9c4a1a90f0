// The HAL's own threads. None of them receives the program's signals.
#pragma once

#include <csignal>
#include <functional>
#include <system_error>

namespace tolvane::hal {

/// Blocks all signals on the calling thread for the lifetime of the object. A thread made meanwhile starts
/// with all signals blocked. [not-io]
class SignalsBlocked {
 public:
  SignalsBlocked() noexcept;
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked();

 private:
  sigset_t before_{};
};

/// Runs `work` on a thread that nobody waits for. Returns false without running `work` if the system has no
/// thread left. Debuggers and monitors show `name` (at most 15 bytes). [not-io]
[[nodiscard]] bool runDetached(const char* name, std::function<void()> work);

/// The exception for a failed runDetached(), where no status can be returned. [not-io]
[[nodiscard]] std::system_error noThreadLeft();

}  // namespace tolvane::hal
