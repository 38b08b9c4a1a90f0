#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tolvane::ctl {

/// What a sound file lacks of the sound that it promises: "only 80 of 120 bytes of sound are there". By the
/// header in WAV, RF64, W64, AIFF and AU, by the last page in Ogg. None when nothing is missing, and where a
/// file promises nothing or cannot be read. "-" is standard input; not for pipes. [not-io]
[[nodiscard]] std::optional<std::string> missingEnd(const std::string& path);

/// Whether a size in a header is none: who cannot come back to fill it in writes one like this. [not-io]
[[nodiscard]] bool standsForAnySize(std::uint64_t bytes) noexcept;

}  // namespace tolvane::ctl
