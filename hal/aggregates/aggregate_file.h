#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "hal/aggregates/aggregate_document.h"

namespace tolvane::hal {

/// The path of the user's named aggregates: "tolvane/aggregates.json" in $XDG_CONFIG_HOME, or in
/// "$HOME/.config" if that is unset or not an absolute path. Empty if there is no absolute $HOME either.
/// [not-io]
[[nodiscard]] std::string aggregateFilePath();

/// Reads the file. A missing file is a document without aggregates. An error names the file and gives the
/// system's message, or what is wrong in the content and where. [not-io]
[[nodiscard]] AggregateRead readAggregateFile(const std::string& path);

/// The current aggregates of the file, which is read again only after it changed. Not thread-safe. [not-io]
class AggregateFile {
 public:
  explicit AggregateFile(std::string path) : path_(std::move(path)) {}

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// Empty if the file is invalid or missing.
  [[nodiscard]] const std::vector<Aggregate>& aggregates();

 private:
  /// Identifies one state of the file.
  struct Stamp {
    dev_t device;
    ino_t file;
    off_t bytes;
    std::int64_t seconds;
    std::int64_t nanoseconds;
    bool operator==(const Stamp&) const = default;
  };

  [[nodiscard]] std::optional<Stamp> stamp() const;

  std::string path_;
  std::optional<Stamp> read_;  // at the last reading; none if there was no file
  std::vector<Aggregate> aggregates_;
};

}  // namespace tolvane::hal
