#pragma once

namespace tolvane {

/// Writes one line to standard output, at once and whole: the formatted text and a line feed. A text longer
/// than 255 bytes is cut. Allocates nothing itself. [not-io; the first IO cycle is the one exception]
void traceLine(const char* format, ...) noexcept __attribute__((format(printf, 1, 2)));

}  // namespace tolvane
