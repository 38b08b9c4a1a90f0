#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_set>

namespace tolvane {

/// The routes the matrix shows as active, by their keys.
using RouteKeys = std::unordered_set<std::string>;

/// The text form of a route inside the matrix: decimal input (row) index, a comma, decimal output (column)
/// index, zero-based and nothing else: input 0 to output 1 is "0,1". Short enough for every grid on a screen
/// to take no heap memory. [any-thread]
[[nodiscard]] std::string routeKey(std::int64_t input, std::int64_t output);

}  // namespace tolvane
