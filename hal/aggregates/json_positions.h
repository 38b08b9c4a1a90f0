#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace tolvane::hal {

/// A JSON text with the place of every value in it.
struct LocatedJson {
  nlohmann::ordered_json value;
  std::map<std::string, std::size_t> offsets;  // in bytes, by JSON pointer
  std::string error;                           // why the text is no JSON, with its place; else empty
};

/// Reads UTF-8 text of at most 64 levels. [not-io]
[[nodiscard]] LocatedJson parseLocated(std::string_view text);

/// "line 3, column 7", both counted from 1, columns in bytes. [not-io]
[[nodiscard]] std::string placeOf(std::string_view text, std::size_t byteOffset);

}  // namespace tolvane::hal
