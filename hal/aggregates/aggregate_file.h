#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "hal/aggregates/aggregate_document.h"

namespace tolvane::hal {

/// Where the user's named aggregates are kept: "tolvane/aggregates.json" in $XDG_CONFIG_HOME, or in
/// "$HOME/.config" when that is unset or no absolute path. Empty without either. [not-io]
[[nodiscard]] std::string aggregateFilePath();

/// Reads the file; one that is not there is a document without aggregates. Error: the file, and the system's
/// words or what is wrong with the content and where. [not-io]
[[nodiscard]] AggregateRead readAggregateFile(const std::string& path);

/// The aggregates of the file as it is now, read again only when it is another. Not thread-safe. [not-io]
class AggregateFile {
 public:
  explicit AggregateFile(std::string path) : path_(std::move(path)) {}

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// None of a file that is bad or missing.
  [[nodiscard]] const std::vector<Aggregate>& aggregates();

 private:
  /// What tells one state of the file from another.
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
  std::optional<Stamp> read_;  // as of the last reading; none: there was no file
  std::vector<Aggregate> aggregates_;
};

}  // namespace tolvane::hal
