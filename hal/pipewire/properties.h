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

/// The property's text; empty if there is none. Valid as long as the properties are.
[[nodiscard]] inline std::string_view textOf(const spa_dict& properties, std::string_view key) {
  for (std::uint32_t item = 0; item < properties.n_items; ++item) {
    if (key == properties.items[item].key && properties.items[item].value != nullptr) {
      return properties.items[item].value;
    }
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
