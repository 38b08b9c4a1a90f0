#pragma once

#include <cstdint>
#include <optional>

namespace tolvane::ctl {

/// How far a long job is, drawn over one line of standard error when that is a terminal. [main-thread]
class ProgressBar {
 public:
  /// `total` steps; none, or a job that is not worth it, or no terminal: nothing is drawn.
  ProgressBar(std::optional<std::int64_t> total, bool worthIt);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  /// Leaves an empty line behind.
  ~ProgressBar();

  /// Redraws when the percentage has changed.
  void show(std::int64_t done);

 private:
  std::int64_t total_;  // 0: draws nothing
  int shownPercent_ = -1;
};

}  // namespace tolvane::ctl
