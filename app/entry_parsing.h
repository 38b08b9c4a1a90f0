// What the user types into the three entry fields, read as it stands: nothing is trimmed, and the user's
// locale has no say.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tolvane {

/// A whole decimal integer: at most one leading sign, then digits and nothing else. None for anything else,
/// and for what does not fit 64 bits. [any-thread]
[[nodiscard]] std::optional<std::int64_t> parseInteger(std::string_view text) noexcept;

/// A floating-point number in any form that the C library reads (decimal, exponent, hexadecimal, infinity,
/// not-a-number), over the whole text. None for anything else, also for leading white space. A number too
/// large becomes infinity. [not-io]
[[nodiscard]] std::optional<float> parseGain(const std::string& text);

/// The gain as "%.2f" writes it. [not-io]
[[nodiscard]] std::string formatGain(float gain);

}  // namespace tolvane
