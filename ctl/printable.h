// Names come from devices, from other users' files and from the command line, and end on a terminal.
#pragma once

#include <string>
#include <string_view>

namespace tolvane::ctl {

/// The text without what drives a terminal or begins a line: control characters, and bytes that are not
/// UTF-8, are shown as "\n", "\x1b" or "\u009b". What it gives it leaves as it is. [not-io]
[[nodiscard]] std::string printable(std::string_view text);

/// The same, but line feeds stay. [not-io]
[[nodiscard]] std::string printableLines(std::string_view text);

/// "NAME: text", the name printable. [not-io]
[[nodiscard]] std::string about(std::string_view name, std::string_view text);

}  // namespace tolvane::ctl
