#include "core/mix/plain_mixer.h"

namespace tolvane {

void addChannel(const ChannelSlot& in, const ChannelSlot& out, float gain, std::int64_t frames) noexcept {
  const std::ptrdiff_t inStride = in.stride;
  const std::ptrdiff_t outStride = out.stride;
  for (std::int64_t f = 0; f < frames; ++f) out.data[f * outStride] += in.data[f * inStride] * gain;
}

void mixPlainly(const CycleRoutes& routes, const ChannelTable& in, const ChannelTable& out,
                std::int64_t frames) noexcept {
  for (std::int32_t i = 0; i < routes.count(); ++i) {
    if (!routes.isIn(i)) continue;
    const CycleRoute& entry = routes[i];
    addChannel(in[entry.src], out[entry.dst], entry.gain, frames);
  }
}

}  // namespace tolvane
