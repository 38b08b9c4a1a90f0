#pragma once

#include <vector>

#include <benchmark/benchmark.h>

namespace tolvane::bench {

/// Prints the measurements as tables that a person can read: one row for a number of channels and frames, one
/// column for a number of routes, nanoseconds and the ratio to the rival in each cell. Measurements with a
/// limit are lines "case|ours|rival|ratio|limit", points of the cost curve
/// "curve|routes|frames|nanoseconds|beside half as many frames".
class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  struct Cell {
    bool interleaved;
    int channels;
    int frames;
    int routes;
    double nanoseconds;
    double ratio;
  };

  void printLimit(const Run& run);
  void printPoint(const Run& run);
  void printTable(bool interleaved);
  void printRow(const Cell& first);

  std::vector<Cell> cells_;
};

}  // namespace tolvane::bench
