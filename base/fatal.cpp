#include "base/fatal.h"

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace tolvane {

void fatal(const char* message) noexcept {
  // A single write: the caller may be the IO thread, and other processes may share standard error.
  char line[256];
  const int length = std::snprintf(line, sizeof line, "tolvane: fatal: %s\n", message);
  const auto size =
      length < static_cast<int>(sizeof line) ? static_cast<std::size_t>(length) : sizeof line - 1;
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line, size);
  std::abort();
}

}  // namespace tolvane
