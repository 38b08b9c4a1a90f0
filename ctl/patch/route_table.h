#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "core/patch/patch_connection.h"

namespace tolvane::ctl {

/// The one-based text of a zero-based channel. Does not overflow for any number. [not-io]
[[nodiscard]] std::string oneBased(std::int64_t channel);

/// The names of a device's channels by zero-based channel; empty where there is none.
struct RouteNames {
  std::function<std::string(std::int64_t)> ofInput;
  std::function<std::string(std::int64_t)> ofOutput;
};

/// A table of the routes, one per line, with one-based channels. "no routes" if there are none. With names,
/// and if any of these channels has one, two more columns have them; very long ones are cut. [not-io]
[[nodiscard]] std::string routeTable(std::span<const PatchConnection> routes, const RouteNames& names = {});

}  // namespace tolvane::ctl
