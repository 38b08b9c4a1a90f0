// Waits for memory that is not there yet. They stop one thread while the processors go on.
#pragma once

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/resource.h>

namespace tolvane::test {

/// Pages that the host of this virtual machine had to fetch for it, so far: the kernel counts the host's
/// reports in the row "HYP". 0 on a real machine.
inline std::uint64_t hostFetches() {
  std::ifstream interrupts("/proc/interrupts");
  std::uint64_t fetches = 0;
  for (std::string line; std::getline(interrupts, line);) {
    std::istringstream fields(line);
    std::string name;
    if (!(fields >> name) || name != "HYP:") continue;
    for (std::uint64_t ofProcessor = 0; fields >> ofProcessor;) fetches += ofProcessor;
  }
  return fetches;
}

/// How often memory had to be fetched so far: by this process from the disk, by the machine from its host.
inline std::uint64_t memoryWaits() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::uint64_t>(usage.ru_inblock) + static_cast<std::uint64_t>(usage.ru_majflt) +
         hostFetches();
}

}  // namespace tolvane::test
