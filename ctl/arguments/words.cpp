#include "ctl/arguments/words.h"

#include <CLI/CLI.hpp>

namespace tolvane::ctl {

namespace {

// The argument library parses "[a,b]" as a list and ignores "". Appending this mark makes either a plain
// word.
constexpr char kWordMark = '\x1F';

}  // namespace

std::string marked(const std::string& word) {
  const bool looksLikeAList = word.starts_with('[') && word.ends_with(']');
  return word.empty() || looksLikeAList || word.ends_with(kWordMark) ? word + kWordMark : word;
}

std::string withoutMarks(std::string text) {
  for (std::size_t at = text.find(kWordMark); at != std::string::npos; at = text.find(kWordMark, at))
    text.erase(at, 1);
  return text;
}

CLI::Validator name() {
  const auto check = [](std::string& text) {
    if (text.ends_with(kWordMark)) text.pop_back();
    return text.empty() ? std::string("the name cannot be empty") : std::string();
  };
  return {check, ""};
}

}  // namespace tolvane::ctl
