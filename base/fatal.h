#pragma once

namespace tolvane {

/// Ends the process (abort) after one line on standard error, "tolvane: fatal: " and the message: for what
/// cannot happen in correct operation. [any-thread]
[[noreturn]] void fatal(const char* message) noexcept;

}  // namespace tolvane
