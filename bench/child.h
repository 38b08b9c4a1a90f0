#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace tolvane::bench {

/// A program that runs from construction to destruction, or until this process ends. Its output is discarded.
/// Construct and destroy it on the main thread: the program ends with the thread that started it.
class Child {
 public:
  /// `arguments` starts with the program, which is looked up in PATH. Throws std::runtime_error if the
  /// process cannot be made.
  explicit Child(const std::vector<std::string>& arguments);
  /// Asks the program to end (SIGTERM) and waits. Kills it after three seconds.
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  [[nodiscard]] pid_t pid() const noexcept { return pid_; }

 private:
  pid_t pid_;
};

}  // namespace tolvane::bench
