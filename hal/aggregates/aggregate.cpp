#include "hal/aggregates/aggregate.h"

#include <algorithm>

namespace tolvane::hal {

std::string whyNoAggregateName(std::string_view name) {
  const auto isControl = [](char byte) { return (byte >= 0 && byte < 0x20) || byte == 0x7F; };
  if (name.find_first_not_of(' ') == std::string_view::npos) return "an aggregate's name cannot be empty";
  if (std::any_of(name.begin(), name.end(), isControl)) {
    return "an aggregate's name cannot have control characters";
  }
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
