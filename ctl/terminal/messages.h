// Messages for people go to standard error; standard output is for data.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

/// Writes one message to standard error, after the program's name. Escapes control characters except line
/// feeds, so pass names through printable() first. [main-thread]
void say(std::string_view text);

/// Reports the failure and returns its exit status. [main-thread]
[[nodiscard]] ExitStatus fail(const Failure& failure);

/// Messages of a run whose meters may occupy the terminal. A message would tear the picture: after holdBack()
/// messages are kept, and release() writes them. [main-thread]
class MessageLog {
 public:
  void say(std::string_view text);
  void holdBack() { heldBack_ = true; }
  void release();
  /// The newest message, for the picture's message line. Empty before the first.
  [[nodiscard]] const std::string& latest() const noexcept { return latest_; }

 private:
  bool heldBack_ = false;
  std::string latest_;
  std::vector<std::string> kept_;
};

}  // namespace tolvane::ctl
