#include "core/routing/mix/reference_mixer.h"

namespace tolvane {

void addRoute(const CycleRoute& route, const ChannelSlot& out, std::int64_t frames) noexcept {
  const std::ptrdiff_t inStride = route.stride;
  const std::ptrdiff_t outStride = out.stride;
  for (std::int64_t f = 0; f < frames; ++f) out.data[f * outStride] += route.data[f * inStride] * route.gain;
}

void mixReference(const CycleRoutes& routes, const ChannelTable& out, std::int64_t frames) noexcept {
  for (std::int32_t i = 0; i < routes.count(); ++i) {
    if (routes[i].data != nullptr) addRoute(routes[i], out[routes[i].dst], frames);
  }
}

}  // namespace tolvane
