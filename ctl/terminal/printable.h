// Makes names safe to print on a terminal: they come from devices, other users' files and the command line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tolvane::ctl {

/// Escapes control characters and invalid UTF-8 as "\n", "\x1b" or "\u009b", so that the text can neither
/// control a terminal nor start a new line. Escaping twice changes nothing. [not-io]
[[nodiscard]] std::string printable(std::string_view text);

/// The same, but keeps line feeds. [not-io]
[[nodiscard]] std::string printableLines(std::string_view text);

/// The text, which is cut if it is longer than `characters`: an ellipsis then ends it. Never cuts within a
/// character of valid UTF-8. [not-io]
[[nodiscard]] std::string shortened(std::string_view text, std::size_t characters = 100);

/// "NAME: text". Escapes only the name. [not-io]
[[nodiscard]] std::string about(std::string_view name, std::string_view text);

}  // namespace tolvane::ctl
