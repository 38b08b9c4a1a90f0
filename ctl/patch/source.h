// Reading and decoding patch files for the commands. A patch that the engine could not route is refused.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "core/patch/patch_connection.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

using Routes = std::vector<PatchConnection>;
using PatchResult = Result<Routes, Failure>;

/// Which files to read. `anything` includes FIFOs and terminals, whose reading blocks until something is
/// written. `regularFile` never blocks that way: anything else is a failure.
enum class Readable { anything, regularFile };

/// Reads and decodes a patch file of at most 256 MiB. Failure: it cannot be read; or it is no patch, or a
/// sounding route has a channel number beyond 32 bits (badPatch). [not-io]
[[nodiscard]] PatchResult loadPatch(const std::string& path);

/// Reads the text of a file of at most 256 MiB, without decoding it. Failure: it cannot be read, is larger,
/// or is not of the kind that `readable` allows. [not-io]
[[nodiscard]] Result<std::string, Failure> readPatchText(const std::string& path, Readable readable);

/// Decodes a text as loadPatch() does; `path` is for messages. [not-io]
[[nodiscard]] PatchResult parsePatch(const std::string& path, const std::string& text);

/// A note for the user if more routes are active than can sound; none if all sound. [not-io]
[[nodiscard]] std::optional<std::string> unheardRoutesNote(const std::string& path,
                                                           std::span<const PatchConnection> routes);

/// A patch file that is read repeatedly. The first reading accepts any file. Later readings accept only a
/// regular file: a running session must not block on a FIFO.
class PatchSource {
 public:
  explicit PatchSource(std::string path) : path_(std::move(path)) {}

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// The file's text as last read or saved. [not-io]
  [[nodiscard]] const std::string& text() const noexcept { return lastText_; }

  /// The caller has saved this text as the file, so that it is no change to be loaded. [not-io]
  void noteSaved(std::string text) {
    lastText_ = std::move(text);
    lastFailure_.reset();
  }

  /// The first reading. [not-io]
  [[nodiscard]] PatchResult load();

  /// Reads the file again. [not-io]
  [[nodiscard]] PatchResult reload();

  /// Reads the file again. Returns the result only if the text, or the reason why it cannot be read, differs
  /// from the last reading. [not-io]
  [[nodiscard]] std::optional<PatchResult> loadIfChanged();

 private:
  [[nodiscard]] PatchResult read(Readable readable);

  std::string path_;
  std::string lastText_;                // as last read without a failure
  std::optional<Failure> lastFailure_;  // why the last reading failed; none if it did not
};

}  // namespace tolvane::ctl
