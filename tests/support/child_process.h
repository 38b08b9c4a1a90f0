// Runs a piece of a test in a process of its own: for what happens once in the life of a process.
#pragma once

#include <functional>
#include <string>

namespace tolvane::test {

struct ChildResult {
  std::string standardOutput;
  int exitStatus = 0;    // as exit() was given it; -1 when a signal ended the child
  int signalNumber = 0;  // the signal that ended the child, or 0
};

/// Runs `action` in a child, waits for its end. The child ends with status 0 when `action` returns. The
/// caller has no other threads.
ChildResult runInChild(const std::function<void()>& action);

}  // namespace tolvane::test
