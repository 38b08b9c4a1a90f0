#include "core/routing/mix/lane_plan.h"

#include <algorithm>

#include "core/routing/mix/clear.h"

namespace tolvane {

namespace {

// What lanes and tiles cost, measured with vectors of 8 and of 16. In tiles a route costs a twelfth of a
// layer, and transposing the channels of a group and back costs one layer and a half.
constexpr std::int32_t kLayerCost = 12;
constexpr std::int32_t kRouteCost = 1;
constexpr std::int32_t kGroupCost = 18;

constexpr std::uint64_t bit(std::int32_t lane) noexcept {
  return std::uint64_t{1} << static_cast<unsigned>(lane);
}

}  // namespace

bool LanePlan::mix(AudioBuffer& buffer, std::int64_t first) noexcept {
  if (!plan(buffer, first)) return false;
  clearFrom(buffer, everyGroup_ ? frames_ : 0);
  kernels_.mixLanes(groups_, groupCount_, frames_);
  return true;
}

bool LanePlan::plan(const AudioBuffer& buffer, std::int64_t first) noexcept {
  const std::int64_t width = kernels_.vectorFloats;
  const std::int64_t channels = buffer.mNumberChannels;
  if (kernels_.mixLanes == nullptr || channels < width) return false;
  // addGroup() adds the groups one by one, so that a patch that is faster in tiles is found early.
  tileCost_ = routes_.count() * kRouteCost;
  // If the channel count is no multiple of the width, the last group overlaps the previous one.
  for (std::int64_t channel = 0; channel < channels; channel += width) {
    if (!addGroup(buffer, first, std::min(channel, channels - width))) return false;
  }
  return true;
}

bool LanePlan::addGroup(const AudioBuffer& buffer, std::int64_t first, std::int64_t channel) noexcept {
  if (groupCount_ == kMaxGroups) return false;
  LaneGroup& group = groups_[groupCount_];
  group = {static_cast<float*>(buffer.mData) + channel, static_cast<std::ptrdiff_t>(buffer.mNumberChannels),
           0, &layers_[layerCount_], 0};
  const std::int64_t firstOut = first + channel;
  const auto lanes =
      static_cast<std::int32_t>(std::min<std::int64_t>(kernels_.vectorFloats, out_.slotCount() - firstOut));
  LaneRoutes routes[kMaxVectorFloats];
  std::int32_t count = 0;
  for (std::int32_t lane = 0; lane < lanes; ++lane) {
    const std::int32_t route = out_[firstOut + lane].firstRoute;
    if (route != kNoRoute) routes[count++] = {lane, route, &layers_[layerCount_]};
  }
  if (count == 0) {
    everyGroup_ = false;
    return true;
  }
  ++groupCount_;
  tileCost_ += kGroupCost;
  return addLayers(group, routes, count);
}

/// Adds the first route of each lane, then the second of each, and so on.
bool LanePlan::addLayers(LaneGroup& group, LaneRoutes* lanes, std::int32_t count) noexcept {
  const CycleRoute* const routes = &routes_[0];
  LaneLayer* const layers = &layers_[layerCount_];
  LaneLayer* const limit = &layers_[std::min(kMaxLayers, tileCost_ / kLayerCost)];
  LaneLayer* end = layers;
  const std::int32_t stride = routes[lanes[0].next].stride;
  // Lanes cannot read planar inputs.
  if (stride == 1) return false;
  while (count > 0) {
    std::int32_t left = 0;
    for (std::int32_t i = 0; i < count; ++i) {
      const std::int32_t lane = lanes[i].lane;
      const CycleRoute& route = routes[lanes[i].next];
      if (route.stride != stride) return false;
      const std::uintptr_t base =
          reinterpret_cast<std::uintptr_t>(route.data) - static_cast<std::uintptr_t>(lane) * sizeof(float);
      // Takes the first layer with this base after the layer of the lane's previous route. So each lane sums
      // its routes in their order.
      LaneLayer* layer = lanes[i].layer;
      while (layer != end && layer->base != base) ++layer;
      if (layer == end) {
        if (end == limit) return false;
        *end++ = {base, 0, {}};
      }
      layer->lanes |= bit(lane);
      layer->gains[lane] = route.gain;
      if (route.next != kNoRoute) lanes[left++] = {lane, route.next, layer + 1};
    }
    count = left;
  }
  group.sourceStride = stride;
  group.layerCount = static_cast<std::int32_t>(end - layers);
  layerCount_ += group.layerCount;
  if (kernels_.loadsMasked) return true;
  const std::uint64_t all = bit(kernels_.vectorFloats) - 1;
  return std::all_of(layers, end, [all](const LaneLayer& layer) { return layer.lanes == all; });
}

}  // namespace tolvane
