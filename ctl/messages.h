// Messages for people go to standard error; standard output is for data.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ctl/failure.h"

namespace tolvane::ctl {

/// Writes one message to standard error, headed by the program's name. Nothing in it drives a terminal, but
/// line feeds stay: names in it have to be printable(). [main-thread]
void say(std::string_view text);

/// Says why, and returns the status to leave with. [main-thread]
[[nodiscard]] ExitStatus fail(const Failure& failure);

/// Messages of a run that may have taken the terminal for a picture: while they are held back they would tear
/// the picture, so they are kept and said when the terminal is free again. [main-thread]
class MessageLog {
 public:
  void say(std::string_view text);
  void holdBack() { heldBack_ = true; }
  void release();
  /// The newest message, for the picture's own line; empty before the first.
  [[nodiscard]] const std::string& latest() const noexcept { return latest_; }

 private:
  bool heldBack_ = false;
  std::string latest_;
  std::vector<std::string> kept_;
};

}  // namespace tolvane::ctl
