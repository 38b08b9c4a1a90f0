#include "ctl/terminal/text_table.h"

#include <algorithm>
#include <utility>

#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

/// The number of characters in a UTF-8 text: every byte except continuation bytes.
std::size_t displayWidth(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  }));
}

}  // namespace

void TextTable::addRow(std::vector<std::string> cells) {
  cells.resize(columns_.size());
  for (std::string& cell : cells) cell = printable(cell);
  rows_.push_back(std::move(cells));
}

std::vector<std::size_t> TextTable::widths() const {
  std::vector<std::size_t> widths;
  for (std::size_t c = 0; c < columns_.size(); ++c) {
    std::size_t width = displayWidth(columns_[c].title);
    for (const auto& row : rows_) width = std::max(width, displayWidth(row[c]));
    widths.push_back(width);
  }
  return widths;
}

std::string TextTable::line(const std::vector<std::string>& cells,
                            const std::vector<std::size_t>& widths) const {
  std::string text;
  for (std::size_t c = 0; c < cells.size(); ++c) {
    const std::string padding(widths[c] - displayWidth(cells[c]), ' ');
    if (c > 0) text += "  ";
    text += columns_[c].align == Align::right ? padding + cells[c] : cells[c] + padding;
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return text + '\n';
}

std::string TextTable::text() const {
  const std::vector<std::size_t> columnWidths = widths();
  std::vector<std::string> titles;
  for (const Column& column : columns_) titles.push_back(column.title);
  std::string text = line(titles, columnWidths);
  for (const auto& row : rows_) text += line(row, columnWidths);
  return text;
}

}  // namespace tolvane::ctl
