// Runs part of a test in its own process, to test what happens only once in a process.
#pragma once

#include <functional>
#include <string>

namespace tolvane::test {

struct ChildResult {
  std::string standardOutput;
  int exitStatus = 0;    // the value given to exit(); -1 if a signal ended the child
  int signalNumber = 0;  // the signal that ended the child, or 0
};

/// Runs `action` in a child process and waits until it ends. The child exits with status 0 when `action`
/// returns. The caller must have no other threads.
ChildResult runInChild(const std::function<void()>& action);

}  // namespace tolvane::test
