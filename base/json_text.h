// What every reader of JSON text needs beside the parser: byte positions, and the reason why a text is not
// JSON.
#pragma once

#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace tolvane {

/// Iterator over a text that counts the bytes it takes, because the parser reports no positions of values.
/// The parser copies the iterator; all copies share the count. [any-thread]
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  /// `taken` must outlive the iterator and its copies.
  CountingIterator(const char* at, std::size_t& taken) : at_(at), taken_(&taken) {}

  char operator*() const { return *at_; }
  CountingIterator& operator++() {
    ++at_;
    ++*taken_;
    return *this;
  }
  bool operator==(const CountingIterator& other) const { return at_ == other.at_; }

 private:
  const char* at_;
  std::size_t* taken_;
};

/// What is wrong with a text, and at which byte, counted from 0.
struct JsonTextFault {
  std::string reason;
  std::size_t byteOffset = 0;
};

/// A fault that the parser would not report, or not clearly: an empty text, or a NUL byte, which the parser
/// takes for the end of the text. [any-thread]
[[nodiscard]] std::optional<JsonTextFault> faultBeforeParsing(std::string_view text);

/// Where the next value begins, if the parser has taken the text up to `previousEnd` and announces a value.
/// The parser may already have taken the byte that ends a number; that byte then lies before `previousEnd`.
/// [any-thread]
[[nodiscard]] std::size_t nextValueOffset(std::string_view text, std::size_t previousEnd);

/// The parser's message without its error number, its line and column, and the token that it last read, which
/// may have any length and content. The wording depends on the parser's version; only "syntax error" does
/// not. [any-thread]
[[nodiscard]] std::string syntaxReason(std::string_view parserMessage);

}  // namespace tolvane
