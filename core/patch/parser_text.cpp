#include "core/patch/parser_text.h"

namespace tolvane {

/// Updates the place after this byte. The place is right only while the text is valid JSON; the parser stops
/// at the first error.
void ParserText::follow(char byte) {
  if (place_ == Place::escape) {
    place_ = Place::string;
  } else if (place_ == Place::string) {
    if (byte == '\\') place_ = Place::escape;
    if (byte == '"') place_ = Place::between;
  } else if (place_ == Place::between || !isStillNumber(byte)) {
    const bool isNumber = byte == '-' || isDigit(byte);
    digits_ = isDigit(byte) ? 1 : 0;
    place_ = isNumber ? Place::integer : byte == '"' ? Place::string : Place::between;
  }
}

bool ParserText::isStillNumber(char byte) {
  if (isDigit(byte)) {
    if (place_ == Place::integer) ++digits_;
    return true;
  }
  if (place_ == Place::exponent) return byte == '+' || byte == '-';
  if (byte == 'e' || byte == 'E') {
    place_ = Place::exponent;
    return true;
  }
  if (byte != '.' || place_ != Place::integer) return false;
  place_ = Place::fraction;
  return true;
}

}  // namespace tolvane
