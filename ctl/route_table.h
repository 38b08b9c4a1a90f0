#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "core/patch_connection.h"

namespace tolvane::ctl {

/// A zero-based channel as people count it; no channel number overflows. [not-io]
[[nodiscard]] std::string oneBased(std::int64_t channel);

/// The routes as a table, one a line, channels one-based; one line that says so when there is none. [not-io]
[[nodiscard]] std::string routeTable(std::span<const PatchConnection> routes);

}  // namespace tolvane::ctl
