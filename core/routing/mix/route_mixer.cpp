#include "core/routing/mix/route_mixer.h"

#include "core/routing/mix/cycle_plan.h"

namespace tolvane {

void mixRoutes(const CycleRoutes& routes, const AudioBufferList& input, AudioBufferList& output,
               ChannelTable& in, ChannelTable& out, std::int64_t frames, const MixKernels& kernels) noexcept {
  CyclePlan plan(routes, in, out, frames, kernels);
  plan.run(input, output);
}

}  // namespace tolvane
