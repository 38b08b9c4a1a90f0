#pragma once

#include <optional>
#include <string>

#include "core/result.h"
#include "ctl/failure.h"
#include "hal/aggregates/aggregate_document.h"

namespace tolvane::ctl {

/// The user's file of aggregates, for changing it: nobody else who changes it by this class does so from the
/// moment it is read to its end. [main-thread]
class AggregateStore {
 public:
  /// Makes the folder if need be. Failure: the folder cannot be made or locked; the file cannot be read, or
  /// is bad: the text says where.
  [[nodiscard]] static Result<AggregateStore, Failure> open();

  AggregateStore(AggregateStore&& other) noexcept;
  AggregateStore(const AggregateStore&) = delete;
  AggregateStore& operator=(const AggregateStore&) = delete;
  AggregateStore& operator=(AggregateStore&&) = delete;
  ~AggregateStore();

  [[nodiscard]] const hal::AggregateDocument& document() const noexcept { return document_; }

  /// Makes this the content of the file; as it was when that fails.
  [[nodiscard]] std::optional<Failure> write(const std::string& text);

 private:
  AggregateStore(std::string path, int lock) : path_(std::move(path)), lock_(lock) {}

  std::string path_;
  int lock_;  // the folder's descriptor; -1 when it has moved to another object
  hal::AggregateDocument document_;
};

/// The file as it is now, for looking at it. Failure: as of open(), but for the folder. [main-thread]
[[nodiscard]] Result<hal::AggregateDocument, Failure> readAggregates();

}  // namespace tolvane::ctl
