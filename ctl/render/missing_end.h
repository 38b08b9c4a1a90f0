#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tolvane::ctl {

/// Checks whether a sound file is cut off, and says by how much: "only 80 of 120 bytes of sound are there".
/// WAV, RF64, W64, AIFF and AU are checked by the size in their header, Ogg by its last page. None if nothing
/// is missing, if the file states no size, or if it cannot be read. "-" is standard input. Not for pipes.
/// [not-io]
[[nodiscard]] std::optional<std::string> missingEnd(const std::string& path);

/// True if a size in a header is a placeholder. A program that cannot seek back, because it writes to a pipe,
/// leaves such a value. [not-io]
[[nodiscard]] bool standsForAnySize(std::uint64_t bytes) noexcept;

}  // namespace tolvane::ctl
