// Reads the server's properties, which are all text.
#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "hal/pipewire/pipewire_headers.h"

namespace tolvane::hal::pipewire {

/// The property's text; empty if there is none. Valid as long as the properties are. A server may send
/// properties without a key or a value.
[[nodiscard]] inline std::string_view textOf(const spa_dict& properties, std::string_view key) {
  for (std::uint32_t item = 0; item < properties.n_items; ++item) {
    const spa_dict_item& property = properties.items[item];
    if (property.key != nullptr && property.value != nullptr && key == property.key) return property.value;
  }
  return {};
}

/// The text as an integer; none if it is anything else.
template <class Number>
[[nodiscard]] std::optional<Number> numberIn(std::string_view text) {
  Number number{};
  const auto end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return number;
}

template <class Number>
[[nodiscard]] std::optional<Number> numberOf(const spa_dict& properties, std::string_view key) {
  return numberIn<Number>(textOf(properties, key));
}

}  // namespace tolvane::hal::pipewire
