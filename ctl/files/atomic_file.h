#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

/// An atomic file: it appears under its name only when it is complete, and the old file of that name stays
/// until then. It has no name before, so nothing remains if the object is destroyed or the process is killed.
/// Where the system has no unnamed files, it has a hidden name in the same folder instead; only a killed
/// process leaves that behind. [not-io]
class AtomicFile {
 public:
  /// Follows symbolic links: the file that they lead to is replaced or created, and the links stay. Failure:
  /// the folder cannot be written, what `path` names is no regular file, or the links form a loop.
  [[nodiscard]] static Result<AtomicFile, Failure> create(const std::string& path);

  AtomicFile(AtomicFile&& other) noexcept;
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;
  AtomicFile& operator=(AtomicFile&&) = delete;
  ~AtomicFile();

  /// Open for reading and writing. The object owns and closes it.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

  /// Writes all of the text behind what is there. Returns false and sets errno on failure.
  [[nodiscard]] bool write(std::string_view text) const;

  /// Flushes the content to disk and gives the file its name, replacing the old file. On failure the old file
  /// stays.
  [[nodiscard]] std::optional<Failure> commit();

 private:
  AtomicFile(std::string path, std::string temporary, int descriptor)
      : path_(std::move(path)), temporary_(std::move(temporary)), descriptor_(descriptor) {}

  /// Returns false and sets errno on failure.
  [[nodiscard]] bool takeName();

  std::string path_;       // the target, with symbolic links resolved
  std::string temporary_;  // the hidden name; empty if the file has none
  int descriptor_;
};

}  // namespace tolvane::ctl
