#pragma once

#include <cstdint>

#include "core/mix/channel_table.h"
#include "core/routing_context.h"

namespace tolvane {

/// One route of a cycle.
struct CycleRoute {
  std::int32_t src;
  std::int32_t dst;
  float gain;
  std::int32_t next;  // the next route into the same output; kNoRoute after the last
};

inline constexpr std::int32_t kNoRoute = -1;

/// The published routes of one cycle, those into one output chained in their order: the slot's link leads to
/// the first of them, kNoRoute where there is none. [io-thread]
class CycleRoutes {
 public:
  /// Room for routes 0 to `count`, at most kMaxPatchEntries, which are then put in or left out, each, from
  /// the last to the first.
  explicit CycleRoutes(std::int32_t count) noexcept : count_(count) {}

  /// `target` is the output's slot.
  void put(std::int32_t route, const PatchEntry& entry, ChannelSlot& target) noexcept {
    routes_[route] = {entry.src, entry.dst, entry.gain, target.link};
    target.link = route;
  }
  void leaveOut(std::int32_t route) noexcept { routes_[route].src = kLeftOut; }

  [[nodiscard]] std::int32_t count() const noexcept { return count_; }
  [[nodiscard]] bool isIn(std::int32_t route) const noexcept { return routes_[route].src != kLeftOut; }

  /// `route` was put in.
  [[nodiscard]] const CycleRoute& operator[](std::int32_t route) const noexcept { return routes_[route]; }

 private:
  static constexpr std::int32_t kLeftOut = -1;

  CycleRoute routes_[kMaxPatchEntries];
  std::int32_t count_;
};

}  // namespace tolvane
