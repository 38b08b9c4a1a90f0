// The route tables that a soak publishes, for the comparison on the IO thread.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <span>

#include "core/patch/patch_connection.h"
#include "core/routing/sounding_routes.h"

namespace tolvane::ctl {

/// The routes that sound, as plain values.
struct RouteTable {
  struct Route {
    std::int64_t input;
    std::int64_t output;
    float gain;
  };
  std::array<Route, kMaxPatchEntries> routes;
  std::size_t count = 0;

  [[nodiscard]] std::span<const Route> all() const noexcept { return std::span(routes).first(count); }
};

/// The last tables, by number. Table 0 is empty.
///
/// The protocol, by role: the main thread announces a table, publishes it to the routing, then confirms it. A
/// cycle that reads confirmed() before it routes and announced() after it has routed with one of the tables
/// from the first number to the second. There are three of them at most, because a second publication waits
/// until a cycle has begun with the first. The tables of a cycle are overwritten kKept publications later,
/// and so after its end.
class SoakTables {
 public:
  /// Keeps the next table. [main-thread]
  void announce(std::span<const PatchConnection> routes) noexcept {
    const std::uint64_t number = announced_.load(std::memory_order_relaxed) + 1;
    RouteTable& table = tables_[number % kKept];
    table.count = 0;
    for (const PatchConnection* route : soundingRoutes(routes))
      table.routes[table.count++] = {route->inputChannel, route->outputChannel, route->gain};
    announced_.store(number, std::memory_order_release);
  }

  /// The table that was announced last is published. [main-thread]
  void confirm() noexcept {
    confirmed_.store(announced_.load(std::memory_order_relaxed), std::memory_order_release);
  }

  [[nodiscard]] std::uint64_t announced() const noexcept {
    return announced_.load(std::memory_order_acquire);
  }
  [[nodiscard]] std::uint64_t confirmed() const noexcept {
    return confirmed_.load(std::memory_order_acquire);
  }

  /// `number` is from confirmed() to announced(). [io-thread]
  [[nodiscard]] const RouteTable& operator[](std::uint64_t number) const noexcept {
    return tables_[number % kKept];
  }

 private:
  static constexpr std::size_t kKept = 16;

  std::array<RouteTable, kKept> tables_{};
  std::atomic<std::uint64_t> announced_{0};
  std::atomic<std::uint64_t> confirmed_{0};
};

}  // namespace tolvane::ctl
