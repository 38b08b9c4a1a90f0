// Pictures for a report, as SVG elements that stand in an HTML page.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ctl/soak/histogram.h"

namespace tolvane::ctl {

struct ChartPoint {
  double x;
  double y;
};

/// A line over time. `unit` names the values; the x axis is minutes. [not-io]
[[nodiscard]] std::string lineChart(const std::string& title, const std::string& unit,
                                    const std::vector<ChartPoint>& points);

/// A bar for each class of durations, on logarithmic scales. With `limitNs`, a mark at this duration.
/// [not-io]
[[nodiscard]] std::string histogramChart(const std::string& title, const Histogram& histogram,
                                         std::uint64_t limitNs);

/// "1.5 ms", "20 µs". [not-io]
[[nodiscard]] std::string durationText(std::uint64_t ns);

/// Text with the characters that HTML gives a meaning escaped. [not-io]
[[nodiscard]] std::string htmlText(const std::string& text);

}  // namespace tolvane::ctl
