#pragma once

#include <optional>
#include <string>

#include "base/result.h"
#include "ctl/terminal/failure.h"
#include "hal/aggregates/aggregate_document.h"

namespace tolvane::ctl {

/// The user's aggregates file, opened for a change. Holds an exclusive lock for its lifetime: open() blocks
/// while another AggregateStore, in any process, holds the lock. [main-thread]
class AggregateStore {
 public:
  /// Creates the folder if it is missing. Failure: the folder cannot be created or locked, or the file cannot
  /// be read, or is invalid (the text says where).
  [[nodiscard]] static Result<AggregateStore, Failure> open();

  AggregateStore(AggregateStore&& other) noexcept;
  AggregateStore(const AggregateStore&) = delete;
  AggregateStore& operator=(const AggregateStore&) = delete;
  AggregateStore& operator=(AggregateStore&&) = delete;
  ~AggregateStore();

  [[nodiscard]] const hal::AggregateDocument& document() const noexcept { return document_; }

  /// Replaces the file's content. On failure the file is unchanged.
  [[nodiscard]] std::optional<Failure> write(const std::string& text);

 private:
  AggregateStore(std::string path, int lock) : path_(std::move(path)), lock_(lock) {}

  std::string path_;
  int lock_;  // descriptor of the locked folder; -1 after a move
  hal::AggregateDocument document_;
};

/// Reads the file without a lock. Failure: the file cannot be read, or is invalid. [main-thread]
[[nodiscard]] Result<hal::AggregateDocument, Failure> readAggregates();

}  // namespace tolvane::ctl
