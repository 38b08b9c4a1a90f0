#include "ctl/terminal/json_text.h"

#include <cstdio>

#include <nlohmann/json.hpp>

namespace tolvane::ctl {

std::string jsonText(const nlohmann::ordered_json& json, int indent) {
  // Names come from the hardware and may be invalid UTF-8.
  const std::string text = json.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    const bool isHighControl = byte == 0xC2 && next < 0xA0;
    if (!isHighControl && byte != 0x7F) {
      result += text[i];
      continue;
    }
    // In JSON these characters occur only within strings, so an escape is valid here.
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, "\\u%04x", isHighControl ? next : byte);
    result += escaped;
    if (isHighControl) ++i;
  }
  return result + '\n';
}

}  // namespace tolvane::ctl
