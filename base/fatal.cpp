#include "base/fatal.h"

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace tolvane {

void fatal(const char* message) noexcept {
  // One write of one line: this may be the IO thread, and standard error may be shared with others.
  char line[256];
  const int length = std::snprintf(line, sizeof line, "tolvane: fatal: %s\n", message);
  const auto size =
      length < static_cast<int>(sizeof line) ? static_cast<std::size_t>(length) : sizeof line - 1;
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line, size);
  std::abort();
}

}  // namespace tolvane
