#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace tolvane::hal {

/// A parsed JSON text, with the place of every value.
struct LocatedJson {
  nlohmann::ordered_json value;
  std::map<std::string, std::size_t> offsets;  // in bytes, by JSON pointer
  std::string error;                           // why the text is not JSON, and where; else empty
};

/// Parses UTF-8 text with at most 64 levels of nesting. [not-io]
[[nodiscard]] LocatedJson parseLocated(std::string_view text);

/// "line 3, column 7", both counted from 1, columns in bytes. [not-io]
[[nodiscard]] std::string placeOf(std::string_view text, std::size_t byteOffset);

}  // namespace tolvane::hal
