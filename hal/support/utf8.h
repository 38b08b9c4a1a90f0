// UTF-8 functions for the names of devices and channels.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tolvane::hal {

/// The length of the text in UTF-16 code units; none if it is not valid UTF-8. [any-thread]
std::optional<std::size_t> utf16Length(std::string_view text) noexcept;

/// The text with every byte that is not part of valid UTF-8 replaced by U+FFFD. [not-io]
std::string validUtf8(std::string_view text);

/// The beginning of valid UTF-8 in at most this many bytes, cut between characters. [not-io]
std::string cutUtf8(std::string text, std::size_t bytes);

}  // namespace tolvane::hal
