// Devices as JSON objects, for the commands that print them.
#pragma once

#include <optional>

#include <nlohmann/json.hpp>

#include "ctl/devices/list.h"

namespace tolvane::ctl {

/// Null where there is no value. [not-io]
template <class T>
[[nodiscard]] nlohmann::ordered_json orNull(const std::optional<T>& value) {
  return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json(nullptr);
}

/// The members that deviceJson() gives a device. [not-io]
[[nodiscard]] nlohmann::ordered_json jsonOf(const DeviceDetails& device);

}  // namespace tolvane::ctl
