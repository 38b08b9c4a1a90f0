#include "ctl/control/route_list.h"

#include <algorithm>
#include <utility>

namespace tolvane::ctl::control {

namespace {

std::ptrdiff_t offset(std::size_t index) {
  return static_cast<std::ptrdiff_t>(index);
}

}  // namespace

RouteState stateOf(const Route& route) {
  return {keyOf(route), route.connection.gain, route.connection.active, route.label};
}

Routes RouteList::connections() const {
  Routes connections(routes_.size());
  std::transform(routes_.begin(), routes_.end(), connections.begin(),
                 [](const Route& route) { return route.connection; });
  return connections;
}

std::vector<std::size_t> RouteList::find(const RouteKey& key) const {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < routes_.size(); ++i) {
    if (keyOf(routes_[i]) == key) found.push_back(i);
  }
  return found;
}

void RouteList::apply(RouteEdit& edit) {
  if (auto* change = std::get_if<ChangeRoute>(&edit)) {
    touched_.insert({keyOf(routes_[change->index]), keyOf(change->route)});
    std::swap(routes_[change->index], change->route);
  } else if (auto* insertion = std::get_if<InsertRoute>(&edit)) {
    const std::size_t index = insertion->index;
    touched_.insert(keyOf(insertion->route));
    routes_.insert(routes_.begin() + offset(index), std::move(insertion->route));
    edit = EraseRoute{index};
  } else if (const auto* removal = std::get_if<EraseRoute>(&edit)) {
    const std::size_t index = removal->index;
    touched_.insert(keyOf(routes_[index]));
    Route route = std::move(routes_[index]);
    routes_.erase(routes_.begin() + offset(index));
    edit = InsertRoute{index, std::move(route)};
  } else {
    auto& replacement = std::get<ReplaceRoutes>(edit);
    touchAll(routes_);
    touchAll(replacement.routes);
    std::swap(routes_, replacement.routes);
  }
}

void RouteList::touchAll(const std::vector<Route>& routes) {
  for (const Route& route : routes) touched_.insert(keyOf(route));
}

RoutesChanged RouteList::takeChanges() {
  RoutesChanged changes;
  std::set<RouteKey> removed = std::exchange(touched_, {});
  const std::set<RouteKey> touched = removed;
  for (const Route& route : routes_) {
    if (!touched.contains(keyOf(route))) continue;
    changes.routes.push_back(stateOf(route));
    removed.erase(keyOf(route));
  }
  changes.removed.assign(removed.begin(), removed.end());
  return changes;
}

}  // namespace tolvane::ctl::control
