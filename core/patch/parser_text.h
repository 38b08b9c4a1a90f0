// A patch file's text as the JSON parser sees it.
#pragma once

#include <cstddef>
#include <iterator>

#include "base/json_text.h"

namespace tolvane {

/// CountingIterator that also hides large numbers. The parser rejects every number beyond a double, even
/// in members that nobody needs. This iterator therefore shows it a smaller number of the same form: exponent
/// digits as zeros, and no more integer digits than a double can hold. Code that needs the number reads it
/// from the text itself. [not-io]
class ParserText {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  /// Byte counts of the text, updated by the parser's copy of the iterator.
  struct Count {
    std::size_t taken = 0;    // including those left out
    std::size_t leftOut = 0;  // not shown to the parser
  };

  /// `count` must outlive the iterator.
  ParserText(const char* at, const char* end, Count& count)
      : at_(at, count.taken), end_(end, count.taken), count_(&count) {}

  char operator*() const { return place_ == Place::exponent && isDigit(*at_) ? '0' : *at_; }
  ParserText& operator++() {
    follow(*at_);
    ++at_;
    while (place_ == Place::integer && digits_ >= kMostDigits && at_ != end_ && isDigit(*at_)) {
      ++at_;
      ++count_->leftOut;
    }
    return *this;
  }
  bool operator==(const ParserText& other) const { return at_ == other.at_; }

 private:
  enum class Place { between, string, escape, integer, fraction, exponent };

  static constexpr int kMostDigits = 300;

  static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
  void follow(char byte);
  bool isStillNumber(char byte);

  CountingIterator at_;
  CountingIterator end_;
  Count* count_;
  Place place_ = Place::between;
  int digits_ = 0;  // of the integer part
};

}  // namespace tolvane
