#pragma once

#include <optional>
#include <string>

#include "core/result.h"
#include "ctl/failure.h"

namespace tolvane::ctl {

/// A file that gets its name only when it is whole. Until then it has none, and nothing is left of it when it
/// is given up, or its process is killed. Where the system has no files without a name it lies beside its
/// place under a hidden one, which only a killed process leaves behind. What stood under the name stays until
/// then. [not-io]
class PendingFile {
 public:
  /// Failure: the folder cannot be written, what stands under the name is no regular file, or links go in a
  /// circle. Symbolic links are followed and stay: where they lead the file is replaced, or made.
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

  /// False, with the reason in errno, when that fails.
  [[nodiscard]] bool takeName();

  std::string path_;       // where the links of the name lead
  std::string temporary_;  // the hidden name; empty when it has none
  int descriptor_;
};

}  // namespace tolvane::ctl
