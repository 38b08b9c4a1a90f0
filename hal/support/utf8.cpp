#include "hal/support/utf8.h"

#include <cstdint>

namespace tolvane::hal {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct Lead {
  std::size_t bytes;       // of the whole sequence; 0 if no sequence begins with this byte
  std::uint32_t smallest;  // a code point below it has a shorter sequence
  std::uint32_t bits;      // the part of the code point in this byte
};

Lead readLead(unsigned char byte) noexcept {
  if (byte < 0x80) return {1, 0, byte};
  if (byte >= 0xC2 && byte <= 0xDF) return {2, 0x80, byte & 0x1FU};
  if (byte >= 0xE0 && byte <= 0xEF) return {3, 0x800, byte & 0x0FU};
  if (byte >= 0xF0 && byte <= 0xF4) return {4, 0x10000, byte & 0x07U};
  return {0, 0, 0};
}

/// The number of bytes of the valid sequence at the start of `text`; 0 if there is none.
std::size_t sequenceBytes(std::string_view text) noexcept {
  const Lead lead = readLead(static_cast<unsigned char>(text[0]));
  if (lead.bytes == 0 || lead.bytes > text.size()) return 0;
  std::uint32_t codePoint = lead.bits;
  for (std::size_t i = 1; i < lead.bytes; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0U) != 0x80U) return 0;
    codePoint = (codePoint << 6U) | (byte & 0x3FU);
  }
  const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  return codePoint < lead.smallest || codePoint > 0x10FFFF || surrogate ? 0 : lead.bytes;
}

}  // namespace

std::optional<std::size_t> utf16Length(std::string_view text) noexcept {
  std::size_t units = 0;
  while (!text.empty()) {
    const std::size_t bytes = sequenceBytes(text);
    if (bytes == 0) return std::nullopt;
    units += bytes == 4 ? 2 : 1;
    text.remove_prefix(bytes);
  }
  return units;
}

std::string cutUtf8(std::string text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0U) == 0x80U) --bytes;
  text.resize(bytes);
  return text;
}

std::string validUtf8(std::string_view text) {
  std::string valid;
  valid.reserve(text.size());
  while (!text.empty()) {
    const std::size_t bytes = sequenceBytes(text);
    valid += bytes == 0 ? kReplacement : text.substr(0, bytes);
    text.remove_prefix(bytes == 0 ? 1 : bytes);
  }
  return valid;
}

}  // namespace tolvane::hal
