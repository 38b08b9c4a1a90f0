#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_set>

namespace tolvane {

/// The routes the matrix shows as active, by their keys.
using RouteKeys = std::unordered_set<std::string>;

/// Key of a route inside the matrix: decimal input (row) index, comma, decimal output (column) index, both
/// zero-based. Input 0 to output 1 is "0,1". Takes no heap memory for any grid that fits a screen.
/// [any-thread]
[[nodiscard]] std::string routeKey(std::int64_t input, std::int64_t output);

}  // namespace tolvane
