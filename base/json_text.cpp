#include "base/json_text.h"

namespace tolvane {

std::optional<JsonTextFault> faultBeforeParsing(std::string_view text) {
  if (text.empty()) return JsonTextFault{"there is no text", 0};
  if (const auto offset = text.find('\0'); offset != std::string_view::npos)
    return JsonTextFault{"found a NUL byte; JSON is UTF-8 text", offset};
  return std::nullopt;
}

std::size_t nextValueOffset(std::string_view text, std::size_t previousEnd) {
  // Only these characters separate two values.
  return text.find_first_not_of(" \t\r\n,:", previousEnd);
}

std::string syntaxReason(std::string_view parserMessage) {
  const std::size_t begin = parserMessage.find("syntax error");
  if (begin == std::string_view::npos) return "syntax error";
  parserMessage = parserMessage.substr(begin);
  return std::string(parserMessage.substr(0, parserMessage.find("; last read")));
}

}  // namespace tolvane
