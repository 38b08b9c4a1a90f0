#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "core/patch/patch_connection.h"

namespace tolvane::ctl {

/// The one-based text of a zero-based channel. Does not overflow for any number. [not-io]
[[nodiscard]] std::string oneBased(std::int64_t channel);

/// A table of the routes, one per line, with one-based channels. "no routes" if there are none. [not-io]
[[nodiscard]] std::string routeTable(std::span<const PatchConnection> routes);

}  // namespace tolvane::ctl
