#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tolvane::ctl {

/// Text in aligned columns, separated by two spaces. [not-io]
class TextTable {
 public:
  enum class Align { left, right };
  struct Column {
    std::string title;
    Align align = Align::left;
  };

  explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// One cell per column, escaped with printable(). Missing cells are empty; extra ones are dropped.
  void addRow(std::vector<std::string> cells);

  /// The title line and the rows, each followed by a line feed, without trailing spaces.
  [[nodiscard]] std::string text() const;

 private:
  [[nodiscard]] std::vector<std::size_t> widths() const;
  [[nodiscard]] std::string line(const std::vector<std::string>& cells,
                                 const std::vector<std::size_t>& widths) const;

  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace tolvane::ctl
