#include "base/fatal.h"

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace tolvane {

void fatal(const char* message) noexcept {
  // A single write: the caller may be the IO thread, and other processes may share standard error.
  char line[256];
  const int length = std::snprintf(line, sizeof line, "tolvane: fatal: %s\n", message);
  const bool isCut = length >= static_cast<int>(sizeof line);
  if (isCut) line[sizeof line - 2] = '\n';
  const std::size_t size = isCut ? sizeof line - 1 : static_cast<std::size_t>(length);
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line, size);
  std::abort();
}

}  // namespace tolvane
