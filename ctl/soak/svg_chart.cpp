#include "ctl/soak/svg_chart.h"

#include <cmath>

#include "ctl/terminal/decimal.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

constexpr double kWidth = 640.0;
constexpr double kHeight = 200.0;
constexpr double kLeft = 70.0;
constexpr double kRight = 10.0;
constexpr double kTop = 28.0;
constexpr double kBottom = 26.0;

/// One digit after the point is enough for a position.
std::string at(double position) {
  return plainDecimal(std::round(position * 10.0) / 10.0);
}

std::string text(double x, double y, const std::string& anchor, const std::string& content) {
  return "<text x=\"" + at(x) + "\" y=\"" + at(y) + "\" text-anchor=\"" + anchor + "\">" + htmlText(content) +
         "</text>\n";
}

std::string line(double x1, double y1, double x2, double y2, const std::string& kind) {
  return "<line class=\"" + kind + "\" x1=\"" + at(x1) + "\" y1=\"" + at(y1) + "\" x2=\"" + at(x2) +
         "\" y2=\"" + at(y2) + "\"/>\n";
}

std::string picture(const std::string& title, const std::string& content) {
  return "<svg viewBox=\"0 0 " + at(kWidth) + " " + at(kHeight) + "\" role=\"img\" aria-label=\"" +
         htmlText(title) + "\">\n<text class=\"title\" x=\"" + at(kLeft) + "\" y=\"16\">" + htmlText(title) +
         "</text>\n" + line(kLeft, kHeight - kBottom, kWidth - kRight, kHeight - kBottom, "axis") +
         line(kLeft, kTop, kLeft, kHeight - kBottom, "axis") + content + "</svg>\n";
}

/// The position of `value` between two values that lie at two positions.
double between(double value, double low, double high, double atLow, double atHigh) {
  return high <= low ? atLow : atLow + (value - low) / (high - low) * (atHigh - atLow);
}

double column(double value, double low, double high) {
  return between(value, low, high, kLeft, kWidth - kRight);
}
double row(double value, double high) {
  return between(value, 0.0, high, kHeight - kBottom, kTop);
}

}  // namespace

std::string htmlText(const std::string& text) {
  std::string result;
  for (const char c : printable(text)) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string durationText(std::uint64_t ns) {
  const auto rounded = [](double value) { return plainDecimal(std::round(value * 10.0) / 10.0); };
  const auto value = static_cast<double>(ns);
  if (ns < 1000) return plainDecimal(value) + " ns";
  if (ns < 1'000'000) return rounded(value / 1e3) + " µs";
  if (ns < 1'000'000'000) return rounded(value / 1e6) + " ms";
  return rounded(value / 1e9) + " s";
}

std::string lineChart(const std::string& title, const std::string& unit,
                      const std::vector<ChartPoint>& points) {
  double lastX = 0.0;
  double highY = 1.0;
  for (const ChartPoint& point : points) {
    lastX = std::max(lastX, point.x);
    highY = std::max(highY, point.y);
  }
  std::string path;
  for (const ChartPoint& point : points) {
    if (!path.empty()) path += ' ';
    path += at(column(point.x, 0.0, lastX));
    path += ',';
    path += at(row(point.y, highY));
  }
  const double base = kHeight - kBottom;
  return picture(title, "<polyline class=\"curve\" points=\"" + path + "\"/>\n" +
                            text(kLeft - 6, kTop + 4, "end", plainDecimal(std::round(highY)) + " " + unit) +
                            text(kLeft - 6, base, "end", "0") + text(kLeft, base + 16, "start", "0") +
                            text(kWidth - kRight, base + 16, "end",
                                 plainDecimal(std::round(lastX * 100.0) / 100.0) + " min"));
}

std::string histogramChart(const std::string& title, const Histogram& histogram, std::uint64_t limitNs) {
  const auto classes = histogram.classes();
  if (classes.empty()) return picture(title, text(kWidth / 2, kHeight / 2, "middle", "nothing was measured"));
  const auto scale = [](std::uint64_t ns) { return std::log10(static_cast<double>(ns) + 1.0); };
  const double low = scale(classes.front().fromNs);
  const double high = scale(std::max(classes.back().toNs, limitNs));
  std::uint64_t most = 0;
  for (const Histogram::Class& each : classes) most = std::max(most, each.count);
  // A class that occurred once must be seen.
  const double highY = std::log10(static_cast<double>(most)) + 1.0;
  const double base = kHeight - kBottom;
  std::string bars;
  for (const Histogram::Class& each : classes) {
    if (each.count == 0) continue;
    const double x = column(scale(each.fromNs), low, high);
    const double y = row(std::log10(static_cast<double>(each.count)) + 1.0, highY);
    bars += "<rect class=\"bar\" x=\"" + at(x) + "\" y=\"" + at(y) + "\" width=\"" +
            at(std::max(1.0, column(scale(each.toNs), low, high) - x - 1.0)) + "\" height=\"" + at(base - y) +
            "\"><title>" + durationText(each.fromNs) + " to " + durationText(each.toNs) + ": " +
            std::to_string(each.count) + "</title></rect>\n";
  }
  if (limitNs != 0) {
    const double x = column(scale(limitNs), low, high);
    bars +=
        line(x, kTop, x, base, "limit") + text(x - 4, kTop + 10, "end", "a cycle: " + durationText(limitNs));
  }
  return picture(title, bars + text(kLeft - 6, kTop + 4, "end", std::to_string(most)) +
                            text(kLeft, base + 16, "start", durationText(classes.front().fromNs)) +
                            text(kWidth - kRight, base + 16, "end",
                                 durationText(std::max(classes.back().toNs, limitNs))));
}

}  // namespace tolvane::ctl
