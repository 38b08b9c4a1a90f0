#include "core/routing/sounding_routes.h"

namespace tolvane {

SoundingRoutes soundingRoutes(std::span<const PatchConnection> routes) noexcept {
  SoundingRoutes sounding;
  for (const PatchConnection& route : routes) {
    if (!route.active) continue;
    if (sounding.count_ == sounding.routes_.size()) break;
    sounding.routes_[sounding.count_++] = &route;
  }
  return sounding;
}

}  // namespace tolvane
