#pragma once

#include <cstdint>

#include "core/routing/routing_context.h"

namespace tolvane {

/// The bytes from `begin` up to, but not including, `end`.
struct MemoryRange {
  std::uintptr_t begin;
  std::uintptr_t end;
};

/// No byte: the initial value of a span.
inline constexpr MemoryRange kNoMemory = {UINTPTR_MAX, 0};

/// The smallest range that holds both.
[[nodiscard]] constexpr MemoryRange spanOf(MemoryRange a, MemoryRange b) noexcept {
  return {a.begin < b.begin ? a.begin : b.begin, a.end > b.end ? a.end : b.end};
}

/// Whether they share a byte.
[[nodiscard]] constexpr bool overlap(MemoryRange a, MemoryRange b) noexcept {
  return a.begin < b.end && b.begin < a.end;
}

/// Ranges of memory, at most one for each route. [io-thread]
class MemoryRanges {
 public:
  void add(MemoryRange range) noexcept;

  /// Whether one of the first `count` ranges shares a byte with `range`.
  [[nodiscard]] bool touch(MemoryRange range, std::int32_t count) const noexcept;
  [[nodiscard]] bool touch(MemoryRange range) const noexcept { return touch(range, count_); }

  /// Whether two of them share a byte.
  [[nodiscard]] bool overlap() const noexcept;

 private:
  MemoryRange list_[kMaxPatchEntries];
  std::int32_t count_ = 0;
  MemoryRange span_ = kNoMemory;
};

}  // namespace tolvane
