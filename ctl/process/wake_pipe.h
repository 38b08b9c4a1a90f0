#pragma once

#include <optional>

namespace tolvane::ctl {

/// A pipe that carries bytes from signal handlers and other threads to a thread in poll(). Neither end
/// blocks.
class WakePipe {
 public:
  /// Throws std::system_error if no descriptor is left. [not-io]
  WakePipe();
  WakePipe(const WakePipe&) = delete;
  WakePipe& operator=(const WakePipe&) = delete;
  ~WakePipe();

  /// For poll(): readable when there is a byte. [any-thread]
  [[nodiscard]] int descriptor() const noexcept { return ends_[0]; }

  /// Sends a byte. Drops it if the pipe is full: the reader will wake anyway. Safe in a signal handler.
  /// [not-io]
  void wake(unsigned char byte) const noexcept;

  /// The next byte, or none. [not-io]
  [[nodiscard]] std::optional<unsigned char> next() const noexcept;

 private:
  int ends_[2];
};

}  // namespace tolvane::ctl
