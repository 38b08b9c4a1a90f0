#include "ctl/process/resource_check.h"

#include <array>
#include <cstddef>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tolvane::ctl {

namespace {

constexpr std::size_t kDescriptors = 64;  // a patch of 64 routes ran with 40
constexpr std::size_t kMebibytes = 256;   // mostly for the stacks of a dozen threads

bool hasDescriptors() {
  std::array<int, kDescriptors> copies{};
  std::size_t made = 0;
  while (made < copies.size() && (copies[made] = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) >= 0) ++made;
  for (std::size_t i = 0; i < made; ++i) ::close(copies[i]);
  return made == copies.size();
}

bool hasMemory() {
  constexpr std::size_t kBytes = kMebibytes << 20U;
  void* const memory = ::mmap(nullptr, kBytes, PROT_NONE, MAP_PRIVATE | MAP_ANON, -1, 0);
  if (memory == MAP_FAILED) return false;
  ::munmap(memory, kBytes);
  return true;
}

}  // namespace

std::optional<Failure> tooFewResources() {
  if (!hasDescriptors()) {
    return Failure{"too few descriptors are left: the sound systems need " + std::to_string(kDescriptors)};
  }
  if (!hasMemory()) {
    return Failure{"too little memory is left: the sound systems need " + std::to_string(kMebibytes) +
                   " MiB"};
  }
  return std::nullopt;
}

}  // namespace tolvane::ctl
