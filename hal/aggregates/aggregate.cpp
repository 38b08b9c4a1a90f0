#include "hal/aggregates/aggregate.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace tolvane::hal {

namespace {

bool isUtf8(std::string_view text) {
  try {
    static_cast<void>(nlohmann::json(text).dump());
    return true;
  } catch (const nlohmann::json::type_error&) {
    return false;
  }
}

unsigned char byteOf(char character) {
  return static_cast<unsigned char>(character);
}

/// True if UTF-8 text has any of U+0000 to U+001F or U+007F to U+009F.
bool hasControlCharacters(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned char byte = byteOf(text[i]);
    if (byte < 0x20 || byte == 0x7F) return true;
    if (byte == 0xC2 && byteOf(text[i + 1]) < 0xA0) return true;
  }
  return false;
}

/// Counts every byte of UTF-8 text except continuation bytes.
std::size_t characterCount(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return (byteOf(byte) & 0xC0U) != 0x80U; }));
}

}  // namespace

std::string whyNoAggregateName(std::string_view name) {
  if (name.find_first_not_of(' ') == std::string_view::npos) return "an aggregate's name cannot be empty";
  if (name == kAllInterfacesName) {
    return std::string("\"") + kAllInterfacesName + "\" is the name of the aggregate of all sound cards";
  }
  return {};
}

std::string whyNoNewAggregateName(std::string_view name) {
  if (!isUtf8(name)) return "an aggregate's name must be UTF-8 text";
  if (hasControlCharacters(name)) return "an aggregate's name cannot have control characters";
  if (characterCount(name) > kMaxAggregateNameCharacters) {
    return "an aggregate's name cannot have more than " + std::to_string(kMaxAggregateNameCharacters) +
           " characters";
  }
  return whyNoAggregateName(name);
}

bool canBeAggregated(std::string_view uid) {
  constexpr std::string_view kPrefix = "pipewire:";
  return uid.starts_with(kPrefix) && uid.size() > kPrefix.size();
}

}  // namespace tolvane::hal
