#include "ctl/soak/report.h"

#include <algorithm>
#include <cmath>

#include "ctl/soak/svg_chart.h"
#include "ctl/terminal/decimal.h"

namespace tolvane::ctl {

namespace {

constexpr const char* kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>Soak</title>
<style>
body { font: 15px/1.45 sans-serif; max-width: 700px; margin: 2em auto; padding: 0 1em; color: #222; }
h1 { font-size: 1.5em; } h2 { font-size: 1.1em; margin-top: 2em; }
table { border-collapse: collapse; } td { padding: 0.1em 1.5em 0.1em 0; vertical-align: top; }
.passed { color: #187a36; } .failed { color: #b00020; }
svg { display: block; width: 100%; margin: 1em 0; font: 11px sans-serif; fill: #444; }
.title { font-weight: bold; } .axis { stroke: #999; } .curve { fill: none; stroke: #2458a6; stroke-width: 1.5; }
.bar { fill: #2458a6; } .limit { stroke: #b00020; stroke-dasharray: 4 3; }
</style>
</head>
<body>
)";

std::string count(std::uint64_t number) {
  return std::to_string(number);
}

std::string samples(std::uint64_t number, const char* verb) {
  return count(number) + (number == 1 ? " sample " : " samples ") + verb;
}

std::string seconds(double value) {
  return plainDecimal(std::round(value * 10.0) / 10.0) + " s";
}

std::string table(const Facts& facts) {
  std::string rows;
  for (const auto& [name, value] : facts)
    rows += "<tr><td>" + htmlText(name) + "</td><td>" + htmlText(value) + "</td></tr>\n";
  return "<table>\n" + rows + "</table>\n";
}

std::uint64_t cycleNs(const SoakResult& result) {
  if (result.sampleRateHz <= 0.0) return 0;
  return static_cast<std::uint64_t>(result.bufferFrames * 1e9 / result.sampleRateHz);
}

std::string times(const Histogram& histogram) {
  return "half below " + durationText(histogram.percentileNs(0.5)) + ", 99.9 % below " +
         durationText(histogram.percentileNs(0.999)) + ", longest " + durationText(histogram.maxNs());
}

template <class Value>
std::string chartOverTime(const SoakResult& result, const std::string& title, const std::string& unit,
                          const Value& value) {
  std::vector<ChartPoint> points;
  for (const SoakMoment& moment : result.moments)
    points.push_back({moment.minutes, static_cast<double>(value(moment))});
  return lineChart(title, unit, points);
}

Facts setup(const SoakResult& result) {
  const std::string cycle =
      count(result.bufferFrames) + " frames at " + plainDecimal(result.sampleRateHz) + " Hz";
  Facts facts = {
      {"device", result.deviceName},
      {"channels", count(result.inputs) + " inputs, " + count(result.outputs) + " outputs"},
      {"cycle", result.isFullSpeed ? cycle + ", at full speed" : cycle},
      {"scheduling of the audio thread", result.scheduling.empty() ? "unknown" : result.scheduling},
      {"begun", result.begun}};
  for (const auto& fact : machineFacts()) facts.push_back(fact);
  return facts;
}

}  // namespace

std::string SoakResult::failure(const LoopCheck& loops) const {
  if (counts.cycles == 0) return "no cycle has run";
  if (counts.wrong != 0) return samples(counts.wrong, "routed wrong");
  if (counts.uncheckedCycles != 0) return count(counts.uncheckedCycles) + " cycles could not be checked";
  if (loops.wrong() != 0) return samples(loops.wrong(), "came back wrong");
  if (loops.missing() != 0) return samples(loops.missing(), "did not come back");
  return {};
}

Facts soakFacts(const SoakResult& result, const SoakChecker& checker) {
  const SoakCounts& counts = result.counts;
  const LoopCheck& loops = checker.loops();
  Facts facts = {{"cycles", count(counts.cycles)},
                 {"audio", seconds(static_cast<double>(counts.frames) / std::max(1.0, result.sampleRateHz)) +
                               " in " + seconds(result.seconds)},
                 {"edits", count(result.edits) + ", published " + count(result.publications)},
                 {"samples routed", count(counts.right) + " right, " + count(counts.wrong) + " wrong"},
                 {"cycles not checked", count(counts.uncheckedCycles)}};
  if (result.firstWrong) facts.emplace_back("first wrong sample", *result.firstWrong);
  if (loops.loops() == 0) {
    facts.emplace_back("samples returned", "no input carries an output");
  } else {
    facts.emplace_back("samples returned", count(loops.right()) + " right, " + count(loops.wrong()) +
                                               " wrong, " + count(loops.missing()) + " missing");
    facts.emplace_back("loops", count(loops.loops()) + " inputs, after " + count(loops.delayFrames()) +
                                    " frames at most, broken " + count(loops.breaks()) + " times");
  }
  facts.insert(facts.end(), {{"overloads that the device reported", count(result.overloads)},
                             {"cycles that began a cycle late or more", count(counts.lateCycles)},
                             {"callbacks longer than their cycle", count(counts.longCallbacks)},
                             {"gaps in the device's frame count",
                              count(counts.gaps) + " of " + count(counts.gapFrames) + " frames in all"},
                             {"losses of the device", count(result.losses)},
                             {"callback", times(checker.callbackTimes())},
                             {"lateness", times(checker.lateness())}});
  return facts;
}

std::string soakPage(const SoakResult& result, const SoakChecker& checker) {
  const std::string failure = result.failure(checker.loops());
  std::string page = kHead;
  page += "<h1>Soak of " + htmlText(result.deviceName) + "</h1>\n";
  page += failure.empty() ? "<p class=\"passed\">Passed: every sample was right.</p>\n"
                          : "<p class=\"failed\">Failed: " + htmlText(failure) + ".</p>\n";
  page += table(soakFacts(result, checker)) + "<h2>Setup</h2>\n" + table(setup(result));
  page +=
      "<h2>Time</h2>\n<p>How long the routing took in each cycle, and how much later than the device's own "
      "time of it each cycle began. Both scales are logarithmic.</p>\n";
  page += histogramChart("Callback time", checker.callbackTimes(), cycleNs(result));
  page += histogramChart("Lateness of cycles", checker.lateness(), cycleNs(result));
  page += "<h2>Over time</h2>\n";
  page += chartOverTime(result, "Memory", "KiB", [](const auto& moment) { return moment.process.memoryKiB; });
  page +=
      chartOverTime(result, "Descriptors", "", [](const auto& moment) { return moment.process.descriptors; });
  page += chartOverTime(result, "Threads", "", [](const auto& moment) { return moment.process.threads; });
  page += chartOverTime(result, "Overloads", "", [](const auto& moment) { return moment.overloads; });
  page += chartOverTime(result, "Cycles", "", [](const auto& moment) { return moment.cycles; });
  return page + "</body>\n</html>\n";
}

}  // namespace tolvane::ctl
