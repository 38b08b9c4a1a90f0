// Patch files as the commands use them: read whole, decoded, and refused where no device could route them.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/patch_connection.h"
#include "core/result.h"
#include "ctl/failure.h"

namespace tolvane::ctl {

using Routes = std::vector<PatchConnection>;
using PatchResult = Result<Routes, Failure>;

/// What to read: anything, which for a FIFO or a terminal waits for its writer; or a regular file alone, for
/// those who cannot wait.
enum class Readable { anything, regularFile };

/// The bytes of a file. Failure: it cannot be read, has more than 256 MiB, which no patch has, or is not what
/// is to be read. [not-io]
[[nodiscard]] Result<std::string, Failure> readWholeFile(const std::string& path,
                                                         Readable readable = Readable::anything);

/// The routes in the text of the file `path`, which the message names. Failure (badPatch): what the decoder
/// refuses, and a route that would sound but whose channel number is beyond 32 bits. [not-io]
[[nodiscard]] PatchResult parsePatch(const std::string& path, const std::string& text);

/// Both of the above. [not-io]
[[nodiscard]] PatchResult loadPatch(const std::string& path);

/// The active routes that a patch can have sounding, in order: the first 64. [not-io]
[[nodiscard]] Routes soundingRoutes(std::span<const PatchConnection> routes);

/// What to tell the user when active routes are more than can sound; none when all are heard. [not-io]
[[nodiscard]] std::optional<std::string> unheardRoutesNote(const std::string& path,
                                                           std::span<const PatchConnection> routes);

/// A patch file that is read again and again: first whatever it is, then as a regular file alone, as what
/// reads it then has other things to do than to wait for a writer.
class PatchSource {
 public:
  explicit PatchSource(std::string path) : path_(std::move(path)) {}

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// The first reading. [not-io]
  [[nodiscard]] PatchResult load();

  /// Reads the file again. [not-io]
  [[nodiscard]] PatchResult reload();

  /// Reads the file again, and gives the result only when it is another than that of the last reading.
  /// [not-io]
  [[nodiscard]] std::optional<PatchResult> loadIfChanged();

 private:
  [[nodiscard]] PatchResult read(Readable readable);

  std::string path_;
  // What the last reading gave: the text, or why there was none.
  std::string lastText_;
  std::optional<Failure> lastFailure_;
};

}  // namespace tolvane::ctl
