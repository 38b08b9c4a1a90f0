#pragma once

#include <cstdint>
#include <optional>

namespace tolvane::ctl {

/// A progress bar on one line of standard error. Draws nothing if standard error is no terminal.
/// [main-thread]
class ProgressBar {
 public:
  /// `total`: the number of steps. Draws nothing if it is unknown, or if the job is too short (`worthIt`).
  ProgressBar(std::optional<std::int64_t> total, bool worthIt);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  /// Clears the line.
  ~ProgressBar();

  /// Redraws when the percentage has changed.
  void show(std::int64_t done);

 private:
  std::int64_t total_;  // 0: draws nothing
  int shownPercent_ = -1;
};

}  // namespace tolvane::ctl
