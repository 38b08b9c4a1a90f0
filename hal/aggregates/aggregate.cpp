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

}  // namespace

std::string whyNoAggregateName(std::string_view name) {
  const auto isControl = [](char byte) { return (byte >= 0 && byte < 0x20) || byte == 0x7F; };
  if (name.find_first_not_of(' ') == std::string_view::npos) return "an aggregate's name cannot be empty";
  if (std::any_of(name.begin(), name.end(), isControl)) {
    return "an aggregate's name cannot have control characters";
  }
  if (!isUtf8(name)) return "an aggregate's name must be UTF-8 text";
  if (name == kAllInterfacesName) {
    return std::string("\"") + kAllInterfacesName + "\" is the name of the aggregate of all sound cards";
  }
  return {};
}

bool canBeAggregated(std::string_view uid) {
  constexpr std::string_view kPrefix = "pipewire:";
  return uid.starts_with(kPrefix) && uid.size() > kPrefix.size();
}

}  // namespace tolvane::hal
