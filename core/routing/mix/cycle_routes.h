#pragma once

#include <cstdint>

#include "core/routing/mix/channel_table.h"
#include "core/routing/routing_context.h"

namespace tolvane {

/// One route of a cycle.
struct CycleRoute {
  const float* data;    // the input's first sample; null if the route is left out
  std::int32_t stride;  // as the input slot's
  float gain;
  std::int32_t next;  // the next route to the same output; kNoRoute after the last
  std::int32_t src;
  std::int32_t dst;
};

/// The published routes of one cycle. The routes to one output form a list in table order: the output slot's
/// firstRoute is the index of the first one, or kNoRoute. [io-thread]
class CycleRoutes {
 public:
  /// Room for `count` routes, at most kMaxPatchEntries. Call put() or leaveOut() once for each, from the last
  /// route to the first.
  explicit CycleRoutes(std::int32_t count) noexcept : count_(count) {}

  /// `source` and `target` are the slots of the route's channels. Both have data.
  void put(std::int32_t route, const PatchEntry& entry, const ChannelSlot& source,
           ChannelSlot& target) noexcept {
    routes_[route] = {source.data, source.stride, entry.gain, target.firstRoute, entry.src, entry.dst};
    target.firstRoute = route;
  }
  void leaveOut(std::int32_t route) noexcept { routes_[route].data = nullptr; }

  [[nodiscard]] std::int32_t count() const noexcept { return count_; }
  [[nodiscard]] const CycleRoute& operator[](std::int32_t route) const noexcept { return routes_[route]; }

 private:
  CycleRoute routes_[kMaxPatchEntries];
  std::int32_t count_;
};

}  // namespace tolvane
