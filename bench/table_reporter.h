#pragma once

#include <vector>

#include <benchmark/benchmark.h>

namespace tolvane::bench {

/// Prints the measurements as readable tables. A row is a number of channels and frames, a column a number of
/// routes. Each cell has the nanoseconds and the ratio to the rival. A measurement with a limit is a line
/// "case|ours|rival|ratio|limit". A point of the cost curve is a line "curve|routes|frames|nanoseconds|beside
/// half as many frames".
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
