// Waiting for what must come.
#pragma once

#include <chrono>
#include <thread>

namespace tolvane::test {

/// Asks `done` every few milliseconds until it says true, at most for `timeout`; what it said last.
template <class Predicate>
bool eventually(std::chrono::milliseconds timeout, Predicate done) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!done()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

/// The same with a limit that only ends a test that has failed.
template <class Predicate>
bool eventually(Predicate done) {
  return eventually(std::chrono::seconds(30), done);
}

}  // namespace tolvane::test
