#pragma once

namespace tolvane {

/// Writes the line "tolvane: fatal: <message>" to standard error, cut to 255 bytes, and aborts the process.
/// For states that cannot occur in correct operation. [any-thread]
[[noreturn]] void fatal(const char* message) noexcept;

}  // namespace tolvane
