#include "bench/table_reporter.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <ostream>
#include <tuple>
#include <utility>

#include "bench/cycle_bench.h"
#include "bench/limit_bench.h"
#include "bench/side_by_side.h"

namespace tolvane::bench {

namespace {

constexpr std::array kRouteColumns = {1, 8, 64};

bool has(const benchmark::BenchmarkReporter::Run& run, const char* name) {
  return run.counters.find(name) != run.counters.end();
}

int counter(const benchmark::BenchmarkReporter::Run& run, const char* name) {
  return static_cast<int>(run.counters.at(name).value);
}

}  // namespace

bool TableReporter::ReportContext(const Context& context) {
  GetOutputStream()
      << "One cycle of the routing against memcpy of the same device's buffers, in turns; median of "
      << kTurns << ".\n"
      << context.cpu_info.num_cpus << " processors\n";
  return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (has(run, kLimit)) printLimit(run);
    if (has(run, kRouteFrameNs)) printPoint(run);
    if (!has(run, kInterleaved)) continue;
    cells_.push_back({counter(run, kInterleaved) != 0, counter(run, kChannels), counter(run, kFrames),
                      counter(run, kRoutes), run.counters.at(kNanoseconds).value,
                      run.counters.at(kRatio).value});
  }
}

void TableReporter::printLimit(const Run& run) {
  const auto bar = run.report_label.find('|');
  GetOutputStream() << std::fixed << run.report_label.substr(0, bar)
                    << (counter(run, kUndisturbed) == 1 ? "" : " (core shared with others)")
                    << std::setprecision(0) << "|" << run.counters.at(kNanoseconds).value << " ns|"
                    << run.report_label.substr(bar + 1) << ", " << run.counters.at(kRivalNanoseconds).value
                    << " ns|" << std::setprecision(3) << run.counters.at(kRatio).value << "|"
                    << std::defaultfloat << run.counters.at(kLimit).value << std::endl;
}

void TableReporter::printPoint(const Run& run) {
  GetOutputStream() << "curve|" << counter(run, kRoutes) << "|" << counter(run, kFrames) << "|" << std::fixed
                    << std::setprecision(5) << run.counters.at(kRouteFrameNs).value << "|"
                    << run.counters.at(kRatio).value / 2 << std::endl;
}

void TableReporter::Finalize() {
  std::sort(cells_.begin(), cells_.end(), [](const Cell& a, const Cell& b) {
    return std::tie(a.channels, a.frames, a.routes) < std::tie(b.channels, b.frames, b.routes);
  });
  printTable(false);
  printTable(true);
  GetOutputStream().flush();
}

void TableReporter::printTable(bool interleaved) {
  const auto isOfTable = [interleaved](const Cell& cell) { return cell.interleaved == interleaved; };
  if (std::none_of(cells_.begin(), cells_.end(), isOfTable)) return;
  std::ostream& out = GetOutputStream();
  out << (interleaved ? "\nInterleaved: one stream of all channels\n"
                      : "\nPlanar: one stream to a channel\n");
  out << "channels  frames";
  for (const int routes : kRouteColumns)
    out << std::setw(12) << routes << (routes == 1 ? " route " : " routes");
  std::pair<int, int> row;
  for (const Cell& cell : cells_) {
    const std::pair<int, int> rowOfCell(cell.channels, cell.frames);
    if (!isOfTable(cell) || rowOfCell == row) continue;
    if (row.first != cell.channels) out << "\n";
    row = rowOfCell;
    printRow(cell);
  }
}

void TableReporter::printRow(const Cell& first) {
  std::ostream& out = GetOutputStream();
  out << std::setw(8) << first.channels << std::setw(8) << first.frames << std::fixed;
  for (const int routes : kRouteColumns) {
    const auto cell = std::find_if(cells_.begin(), cells_.end(), [&](const Cell& c) {
      return c.interleaved == first.interleaved && c.channels == first.channels && c.frames == first.frames &&
             c.routes == routes;
    });
    if (cell == cells_.end()) {
      out << std::setw(19) << "";
    } else {
      out << std::setprecision(0) << std::setw(11) << cell->nanoseconds;
      out << std::setprecision(2) << std::setw(7) << cell->ratio << "x";
    }
  }
  out << "\n";
}

}  // namespace tolvane::bench
