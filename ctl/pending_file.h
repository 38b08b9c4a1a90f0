#pragma once

#include <optional>
#include <string>

#include "core/result.h"
#include "ctl/failure.h"

namespace tolvane::ctl {

/// A file that gets its name only when it is whole: until then it lies beside it under a name of its own, and
/// it is removed when it is given up. What stood under the name stays until then. [not-io]
class PendingFile {
 public:
  /// Failure: the folder cannot be written, or what stands under the name is no regular file. A symbolic link
  /// is followed: its target is what is replaced.
  [[nodiscard]] static Result<PendingFile, Failure> create(const std::string& path);

  PendingFile(PendingFile&& other) noexcept;
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  PendingFile& operator=(PendingFile&&) = delete;
  ~PendingFile();

  /// Open for reading and writing; it stays the object's.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

  /// Makes the content lasting and gives it the name, replacing what stood there. The file is given up when
  /// that fails.
  [[nodiscard]] std::optional<Failure> commit();

 private:
  PendingFile(std::string path, std::string temporary, int descriptor)
      : path_(std::move(path)), temporary_(std::move(temporary)), descriptor_(descriptor) {}

  std::string path_;
  std::string temporary_;  // empty once it has its name, or has moved to another object
  int descriptor_;
};

}  // namespace tolvane::ctl
