#pragma once

namespace tolvane {

/// Writes the formatted text and a line feed to standard output, in one piece and without delay. Text beyond
/// 255 bytes is cut off. Allocates nothing itself. [not-io; the first IO cycle is the one exception]
void traceLine(const char* format, ...) noexcept __attribute__((format(printf, 1, 2)));

}  // namespace tolvane
