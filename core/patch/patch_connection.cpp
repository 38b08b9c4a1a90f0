#include "core/patch/patch_connection.h"

#include <array>

namespace tolvane {

namespace {

using Key = PatchConnection::CodingKeys;

constexpr std::array<std::string_view, 4> kKeyTexts = {"inputChannel", "outputChannel", "gain", "active"};

}  // namespace

std::string_view stringValue(Key key) noexcept {
  return kKeyTexts[static_cast<std::size_t>(key)];
}

std::optional<Key> codingKey(std::string_view text) noexcept {
  for (std::size_t index = 0; index < kKeyTexts.size(); ++index) {
    if (kKeyTexts[index] == text) return static_cast<Key>(index);
  }
  return std::nullopt;
}

std::optional<std::int64_t> intValue(Key /*key*/) noexcept {
  return std::nullopt;
}

std::optional<Key> codingKey(std::int64_t /*value*/) noexcept {
  return std::nullopt;
}

}  // namespace tolvane
