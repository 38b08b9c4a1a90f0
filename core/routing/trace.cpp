#include "core/routing/trace.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace tolvane {

void traceLine(const char* format, ...) noexcept {
  char line[257];
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(line, sizeof line - 1, format, arguments);
  va_end(arguments);
  if (length < 0) return;
  auto end = std::min(static_cast<std::size_t>(length), sizeof line - 2);
  line[end++] = '\n';
  // One call and a flush keep the line whole even if standard output is a pipe with other writers.
  std::fwrite(line, 1, end, stdout);
  std::fflush(stdout);
}

}  // namespace tolvane
