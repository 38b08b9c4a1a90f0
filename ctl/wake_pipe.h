#pragma once

#include <optional>

namespace tolvane::ctl {

/// Bytes from signal handlers and other threads to the thread that sleeps in poll(). Neither end blocks.
class WakePipe {
 public:
  /// Throws std::system_error when there is no descriptor left for it. [not-io]
  WakePipe();
  WakePipe(const WakePipe&) = delete;
  WakePipe& operator=(const WakePipe&) = delete;
  ~WakePipe();

  /// To be polled for reading. [any-thread]
  [[nodiscard]] int descriptor() const noexcept { return ends_[0]; }

  /// Sends a byte; one that no longer fits is dropped, as the reader will wake anyway. Safe in a signal
  /// handler. [not-io]
  void wake(unsigned char byte) const noexcept;

  /// The next byte, or none. [not-io]
  [[nodiscard]] std::optional<unsigned char> next() const noexcept;

 private:
  int ends_[2];
};

}  // namespace tolvane::ctl
