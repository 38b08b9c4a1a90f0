#pragma once

namespace tolvane {

/// Writes the line "tolvane: fatal: <message>" to standard error and aborts the process. For states that
/// cannot occur in correct operation. [any-thread]
[[noreturn]] void fatal(const char* message) noexcept;

}  // namespace tolvane
