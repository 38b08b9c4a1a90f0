// Waiting for a condition.
#pragma once

#include <chrono>
#include <thread>

namespace tolvane::test {

/// Calls `done` every 5 ms until it returns true. Returns false if it has not done so within `timeout`.
template <class Predicate>
bool eventually(std::chrono::milliseconds timeout, Predicate done) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!done()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

/// The same with a timeout of 30 s, which only a failing test reaches.
template <class Predicate>
bool eventually(Predicate done) {
  return eventually(std::chrono::seconds(30), done);
}

}  // namespace tolvane::test
