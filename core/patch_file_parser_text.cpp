#include "core/patch_file_parser_text.h"

namespace tolvane {

/// Says where the byte leads to: as far as the text is JSON, and what comes after that nobody reads.
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
