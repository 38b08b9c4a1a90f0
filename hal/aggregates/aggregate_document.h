#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hal/aggregates/aggregate.h"

namespace tolvane::hal {

struct AggregateRead;

/// The content of a file of named aggregates: a JSON object whose member "aggregates" is an array of objects.
/// Each has a "name" and its "members", an array of objects with "uid", "name", "inputChannels" and
/// "outputChannels". Unknown members are kept. A plain value. [not-io]
class AggregateDocument {
 public:
  /// An empty document, without aggregates.
  AggregateDocument();

  /// Reads the whole text, or reports the first error and its place: "line 4, column 15: /aggregates/0/name:
  /// expected a string".
  [[nodiscard]] static AggregateRead parse(std::string text);

  /// The aggregates in file order. No two have the same name. Each has at least one member, and no two of its
  /// members have the same uid.
  [[nodiscard]] const std::vector<Aggregate>& aggregates() const noexcept { return aggregates_; }
  /// The aggregate of this name; null if there is none.
  [[nodiscard]] const Aggregate* find(std::string_view name) const noexcept;

  /// The file's text with one aggregate added at the end, or with one removed; everything else is kept. An
  /// added aggregate must be one that parse() accepts, with a new name.
  [[nodiscard]] std::string textWith(const Aggregate& aggregate) const;
  [[nodiscard]] std::string textWithout(std::string_view name) const;

 private:
  AggregateDocument(std::string text, std::vector<Aggregate> aggregates)
      : text_(std::move(text)), aggregates_(std::move(aggregates)) {}

  std::string text_;
  std::vector<Aggregate> aggregates_;
};

/// A document, or why there is none.
struct AggregateRead {
  std::optional<AggregateDocument> document;
  std::string error;
};

}  // namespace tolvane::hal
