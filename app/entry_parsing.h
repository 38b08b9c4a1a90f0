// Parsing and formatting for the three entry fields. Nothing is trimmed. The user's locale has no effect.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tolvane {

/// Parses a decimal integer: at most one leading sign, then only digits. Returns nullopt for any other text
/// and for a number that does not fit 64 bits. [any-thread]
[[nodiscard]] std::optional<std::int64_t> parseInteger(std::string_view text) noexcept;

/// Parses a floating-point number in any form that the C library reads: decimal, exponent, hexadecimal,
/// infinity, not-a-number. The number must span the whole text, without leading white space; otherwise
/// returns nullopt. A number too large becomes infinity. [not-io]
[[nodiscard]] std::optional<float> parseGain(const std::string& text);

/// Formats the gain as "%.2f" does in the C locale. [not-io]
[[nodiscard]] std::string formatGain(float gain);

}  // namespace tolvane
