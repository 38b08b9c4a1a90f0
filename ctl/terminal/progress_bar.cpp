#include "ctl/terminal/progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace tolvane::ctl {

ProgressBar::ProgressBar(std::optional<std::int64_t> total, bool worthIt)
    : total_(worthIt && ::isatty(STDERR_FILENO) == 1 ? total.value_or(0) : 0) {}

ProgressBar::~ProgressBar() {
  if (shownPercent_ >= 0) std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(std::int64_t done) {
  if (total_ <= 0) return;
  const int percent =
      static_cast<int>(static_cast<double>(std::min(done, total_)) * 100.0 / static_cast<double>(total_));
  if (percent == shownPercent_) return;
  shownPercent_ = percent;
  constexpr int kCells = 40;
  std::string cells(static_cast<std::size_t>(percent * kCells / 100), '=');
  cells.resize(kCells, ' ');
  std::fprintf(stderr, "\r[%s] %3d %%", cells.c_str(), percent);
}

}  // namespace tolvane::ctl
