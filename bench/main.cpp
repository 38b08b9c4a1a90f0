#include <algorithm>
#include <cstdio>
#include <string_view>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "bench/cycle_bench.h"
#include "bench/limit_bench.h"
#include "bench/table_reporter.h"
#include "core/routing/io_proc.h"

namespace {

/// Runs the first cycle with standard output discarded. That cycle writes a trace, which must not mix with
/// the figures.
void runFirstCycleSilently() {
  std::fflush(stdout);
  const int kept = ::dup(STDOUT_FILENO);
  const int nowhere = ::open("/dev/null", O_WRONLY);
  ::dup2(nowhere, STDOUT_FILENO);
  tolvane::routeCycle(nullptr, nullptr, nullptr);
  std::fflush(stdout);
  ::dup2(kept, STDOUT_FILENO);
  ::close(kept);
  ::close(nowhere);
}

/// False if the arguments ask for the benchmark library's own formats or its list.
bool wantsTables(int argc, char** argv) {
  return std::none_of(argv, argv + argc, [](const char* argument) {
    return std::string_view(argument).starts_with("--benchmark_format") ||
           std::string_view(argument).starts_with("--benchmark_list_tests");
  });
}

}  // namespace

int main(int argc, char** argv) {
  const bool tables = wantsTables(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  runFirstCycleSilently();
  tolvane::bench::registerCycleBenchmarks();
  tolvane::bench::registerLimitBenchmarks();
  tolvane::bench::registerCurveBenchmarks();
  tolvane::bench::TableReporter reporter;
  benchmark::RunSpecifiedBenchmarks(tables ? &reporter : nullptr);
  benchmark::Shutdown();
  return 0;
}
