// cycle_soak: checks that take too long for the suite. Exits with status 1 at the first difference.
//   cycle_soak random CYCLES FIRST_SEED   random cycles in each variant of the mixing loops
//   cycle_soak wrap                       2^32 cycles, after which the trace must not come again
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#include "core/routing/io_proc.h"
#include "core/routing/mix/mix_kernels.h"
#include "cycle_check.h"

namespace tolvane::test {
namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

bool runVariant(const MixKernels& variant, std::uint64_t cycles, std::uint64_t firstSeed) {
  useMixKernels(variant);
  CycleCheck check;
  const auto start = Clock::now();
  for (std::uint64_t seed = firstSeed; seed < firstSeed + cycles; ++seed) {
    const std::string difference = check.differenceOf(seed);
    if (difference.empty()) continue;
    std::printf("%s: seed %" PRIu64 ": %s\n", variant.name, seed, difference.c_str());
    return false;
  }
  std::printf("%s: %" PRIu64 " cycles, seeds %" PRIu64 " to %" PRIu64 ", all equal, %.0f s\n", variant.name,
              cycles, firstSeed, firstSeed + cycles - 1, secondsSince(start));
  return true;
}

bool runRandom(std::uint64_t cycles, std::uint64_t firstSeed) {
  for (const MixKernels* variant : allMixKernels().variants) {
    if (variant != nullptr && !runVariant(*variant, cycles, firstSeed)) return false;
  }
  return true;
}

bool runWrap() {
  routeCycle(nullptr, nullptr, nullptr);  // the first cycle, which is traced
  const int standardOutput = dup(STDOUT_FILENO);
  std::FILE* const written = std::tmpfile();
  if (written == nullptr || dup2(fileno(written), STDOUT_FILENO) < 0) return false;
  const auto start = Clock::now();
  for (std::uint64_t i = 0; i < (std::uint64_t{1} << 32U) + 16; ++i) routeCycle(nullptr, nullptr, nullptr);
  const off_t bytes = lseek(STDOUT_FILENO, 0, SEEK_END);
  dup2(standardOutput, STDOUT_FILENO);
  std::printf("2^32 cycles after the first wrote %lld bytes, %.0f s\n", static_cast<long long>(bytes),
              secondsSince(start));
  return bytes == 0;
}

bool run(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "wrap") == 0) return runWrap();
  if (argc == 4 && std::strcmp(argv[1], "random") == 0)
    return runRandom(std::strtoull(argv[2], nullptr, 10), std::strtoull(argv[3], nullptr, 10));
  std::fputs("usage: cycle_soak random CYCLES FIRST_SEED | cycle_soak wrap\n", stderr);
  return false;
}

}  // namespace
}  // namespace tolvane::test

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  return tolvane::test::run(argc, argv) ? 0 : 1;
}
