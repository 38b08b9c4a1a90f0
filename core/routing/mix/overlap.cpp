#include "core/routing/mix/overlap.h"

namespace tolvane {

void MemoryRanges::add(MemoryRange range) noexcept {
  span_ = spanOf(span_, range);
  list_[count_++] = range;
}

bool MemoryRanges::touch(MemoryRange range, std::int32_t count) const noexcept {
  if (!tolvane::overlap(span_, range)) return false;
  bool any = false;
  for (std::int32_t i = 0; i < count; ++i) any |= tolvane::overlap(list_[i], range);
  return any;
}

bool MemoryRanges::overlap() const noexcept {
  for (std::int32_t i = 1; i < count_; ++i) {
    if (touch(list_[i], i)) return true;
  }
  return false;
}

}  // namespace tolvane
