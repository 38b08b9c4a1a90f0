#include "core/mix/overlap.h"

#include <algorithm>

namespace tolvane {

void MemoryRanges::add(MemoryRange range) noexcept {
  ascending_ = ascending_ && (count_ == 0 || list_[count_ - 1].end <= range.begin);
  span_ = {std::min(span_.begin, range.begin), std::max(span_.end, range.end)};
  list_[count_++] = range;
}

bool MemoryRanges::touch(MemoryRange range, std::int32_t count) const noexcept {
  if (span_.end <= range.begin || range.end <= span_.begin) return false;
  bool any = false;
  for (std::int32_t i = 0; i < count; ++i) any |= list_[i].begin < range.end && range.begin < list_[i].end;
  return any;
}

bool MemoryRanges::overlap() const noexcept {
  // Most devices lay their buffers out in order; only others pay for the pairs.
  if (ascending_) return false;
  for (std::int32_t i = 1; i < count_; ++i) {
    if (touch(list_[i], i)) return true;
  }
  return false;
}

}  // namespace tolvane
