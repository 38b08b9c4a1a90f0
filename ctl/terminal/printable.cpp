#include "ctl/terminal/printable.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace tolvane::ctl {

namespace {

unsigned char byteOf(char character) {
  return static_cast<unsigned char>(character);
}

/// The length in bytes of a UTF-8 character that begins with this byte; 0 if none can.
std::size_t sequenceLength(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

/// True if the first two bytes begin an overlong encoding, a surrogate, or a code point beyond U+10FFFF.
bool isForbidden(unsigned char first, unsigned char second) {
  return (first == 0xE0 && second < 0xA0) || (first == 0xED && second >= 0xA0) ||
         (first == 0xF0 && second < 0x90) || (first == 0xF4 && second >= 0x90);
}

/// The length in bytes of the text's first character; 0 if it is invalid UTF-8.
std::size_t firstCharacter(std::string_view text) {
  const std::size_t length = sequenceLength(byteOf(text[0]));
  if (length == 0 || length > text.size()) return 0;
  const auto continues = [](char byte) { return (byteOf(byte) & 0xC0U) == 0x80U; };
  if (!std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length), continues)) return 0;
  return length > 1 && isForbidden(byteOf(text[0]), byteOf(text[1])) ? 0 : length;
}

std::string inHex(const char* prefix, int digits, unsigned char number) {
  char text[8];
  std::snprintf(text, sizeof text, "%s%0*x", prefix, digits, number);
  return text;
}

std::string escapedByte(unsigned char byte) {
  if (byte == '\n') return "\\n";
  if (byte == '\r') return "\\r";
  if (byte == '\t') return "\\t";
  return inHex("\\x", 2, byte);
}

/// The character, escaped if it is a control character.
std::string shown(std::string_view character) {
  const unsigned char first = byteOf(character[0]);
  if (character.size() == 1 && (first < 0x20 || first == 0x7F)) return escapedByte(first);
  // U+0080 to U+009F are control characters too.
  if (first == 0xC2 && byteOf(character[1]) < 0xA0) return inHex("\\u", 4, byteOf(character[1]));
  return std::string(character);
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = firstCharacter(text);
    result += length == 0 ? escapedByte(byteOf(text[0])) : shown(text.substr(0, length));
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return result;
}

std::string printableLines(std::string_view text) {
  std::string result;
  for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    result += printable(text.substr(0, end)) + '\n';
    text.remove_prefix(end + 1);
  }
  return result + printable(text);
}

std::string shortened(std::string_view text, std::size_t characters) {
  std::size_t end = 0;  // of the characters that stay if the text is cut
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++count) {
    if (count + 1 == characters) end = at;
    at += std::max<std::size_t>(firstCharacter(text.substr(at)), 1);
  }
  if (count <= characters) return std::string(text);
  return std::string(text.substr(0, end)) + "…";
}

std::string about(std::string_view name, std::string_view text) {
  return printable(name).append(": ").append(text);
}

}  // namespace tolvane::ctl
