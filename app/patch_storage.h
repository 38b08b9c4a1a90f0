// The bytes of patch files on the disk.
#pragma once

#include <QString>
#include <optional>
#include <string>
#include <string_view>

namespace tolvane {

/// Reads a regular file of at most 256 MiB. None if it cannot be read, is of another kind, whose reading may
/// never end, or is or grows larger. [main-thread]
[[nodiscard]] std::optional<std::string> readPatchText(const QString& path);

/// Makes `text` the whole content of the file, in its place: it stays the same file, with its permissions and
/// links. A new file has the user's permissions. At no moment between the steps is the file empty or cut: it
/// holds the old text or the new one, either of them followed by spaces at most. So a process that is killed
/// loses neither. A file that cannot be written, or a full disk, leaves the old text. There is no report.
/// [main-thread]
void writePatchText(const QString& path, std::string_view text);

}  // namespace tolvane
