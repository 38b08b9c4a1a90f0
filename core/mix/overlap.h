#pragma once

#include <cstdint>

#include "core/routing_context.h"

namespace tolvane {

/// Bytes of memory, from `begin` up to `end`.
struct MemoryRange {
  std::uintptr_t begin;
  std::uintptr_t end;
};

/// Ranges of memory, at most one a route. [io-thread]
class MemoryRanges {
 public:
  void add(MemoryRange range) noexcept;

  /// Whether one of them shares a byte with `range`; only the first `count` are asked.
  [[nodiscard]] bool touch(MemoryRange range, std::int32_t count) const noexcept;
  [[nodiscard]] bool touch(MemoryRange range) const noexcept { return touch(range, count_); }

  /// Whether two of them share a byte.
  [[nodiscard]] bool overlap() const noexcept;

  /// From the lowest byte to the highest.
  [[nodiscard]] MemoryRange span() const noexcept { return span_; }

 private:
  MemoryRange list_[kMaxPatchEntries];
  std::int32_t count_ = 0;
  MemoryRange span_ = {UINTPTR_MAX, 0};
  bool ascending_ = true;  // each begins where the one before it ends, or later
};

}  // namespace tolvane
