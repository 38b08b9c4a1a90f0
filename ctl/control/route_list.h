// The route list of a running patch, changed only by edits that can be taken back.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "core/patch/patch_connection.h"
#include "ctl/control/answer.h"
#include "ctl/patch/source.h"

namespace tolvane::ctl::control {

/// A route and its label.
struct Route {
  PatchConnection connection;
  std::string label;
  bool operator==(const Route&) const = default;
};

[[nodiscard]] inline RouteKey keyOf(const Route& route) noexcept {
  return {route.connection.inputChannel, route.connection.outputChannel};
}

/// Exchanges the route at the index for another one.
struct ChangeRoute {
  std::size_t index;
  Route route;
};
struct InsertRoute {
  std::size_t index;
  Route route;
};
struct EraseRoute {
  std::size_t index;
};
struct ReplaceRoutes {
  std::vector<Route> routes;
};
using RouteEdit = std::variant<ChangeRoute, InsertRoute, EraseRoute, ReplaceRoutes>;

/// [main-thread]
class RouteList {
 public:
  explicit RouteList(std::vector<Route> routes) : routes_(std::move(routes)) {}

  [[nodiscard]] const std::vector<Route>& routes() const noexcept { return routes_; }
  [[nodiscard]] Routes connections() const;

  /// The places of all routes of this pair of channels, ascending.
  [[nodiscard]] std::vector<std::size_t> find(const RouteKey& key) const;

  /// Makes the edit, and turns it into the one that takes it back.
  void apply(RouteEdit& edit);

  /// The pairs that were edited since the last call, and their routes now.
  [[nodiscard]] RoutesChanged takeChanges();

 private:
  void touchAll(const std::vector<Route>& routes);

  std::vector<Route> routes_;
  std::set<RouteKey> touched_;
};

/// What everybody sees of a route. [any-thread]
[[nodiscard]] RouteState stateOf(const Route& route);

}  // namespace tolvane::ctl::control
