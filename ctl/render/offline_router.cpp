#include "ctl/render/offline_router.h"

#include "core/routing/io_proc.h"

namespace tolvane::ctl {

namespace {

AudioBufferList oneBuffer(std::int32_t channels, void* data, std::size_t frames) noexcept {
  const auto count = static_cast<UInt32>(channels);
  const auto bytes = static_cast<UInt32>(frames * count * sizeof(float));
  return {1, {{count, bytes, data}}};
}

}  // namespace

OfflineRouter::OfflineRouter(std::span<const PatchConnection> routes, std::int32_t inputChannels,
                             std::int32_t outputChannels)
    : context_(initialContext(inputChannels, outputChannels)) {
  writeConnections(&context_, routes);
}

void OfflineRouter::route(const float* input, float* output, std::size_t frames) noexcept {
  // AudioBuffer's pointer is not const, but the routine only reads its input.
  const AudioBufferList in = oneBuffer(context_.inputChannelCount, const_cast<float*>(input), frames);
  AudioBufferList out = oneBuffer(context_.outputChannelCount, output, frames);
  routeUntraced(&in, &out, &context_);
}

}  // namespace tolvane::ctl
