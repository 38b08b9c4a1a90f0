#include "ctl/terminal/messages.h"

#include <cstdio>

#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

void say(std::string_view text) {
  // One write, so that output of other threads or processes does not split the line.
  const std::string line = "tolvanectl: " + printableLines(text) + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

ExitStatus fail(const Failure& failure) {
  say(failure.text);
  return failure.status;
}

void MessageLog::say(std::string_view text) {
  latest_ = printableLines(text);
  if (heldBack_) {
    kept_.emplace_back(text);
  } else {
    ctl::say(text);
  }
}

void MessageLog::release() {
  heldBack_ = false;
  for (const std::string& text : kept_) ctl::say(text);
  kept_.clear();
}

}  // namespace tolvane::ctl
