#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hal/aggregates/aggregate.h"

namespace tolvane::hal {

struct AggregateRead;

/// What a file of named aggregates says: a JSON object whose member "aggregates" is an array of objects, each
/// with a "name" and its "members"; each of those an object with "uid", "name", "inputChannels" and
/// "outputChannels". Members that are not known are kept. A plain value. [not-io]
class AggregateDocument {
 public:
  /// Without any aggregate.
  AggregateDocument();

  /// All of it, or what is wrong first and where: "line 4, column 15: /aggregates/0/name: expected a string".
  [[nodiscard]] static AggregateRead parse(std::string text);

  /// In the file's order, no two of one name, each with at least one member, no two of one uid.
  [[nodiscard]] const std::vector<Aggregate>& aggregates() const noexcept { return aggregates_; }
  /// Null when there is none of this name.
  [[nodiscard]] const Aggregate* find(std::string_view name) const noexcept;

  /// The file's text with one aggregate more, at the end, or with one less; everything else is kept. The
  /// aggregate must be one that parse() would take, and its name a new one.
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
