#include "guarded_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include "base/fatal.h"

namespace tolvane::test {

GuardedMemory::GuardedMemory(std::size_t floats) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t usable = (floats * sizeof(float) + page - 1) / page * page;
  bytes_ = usable + page;
  begin_ = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (begin_ == MAP_FAILED) fatal("no memory for the random cycles");
  char* const end = static_cast<char*>(begin_) + usable;
  if (mprotect(end, page, PROT_NONE) != 0) fatal("the memory of the random cycles cannot be guarded");
  end_ = reinterpret_cast<float*>(end);
}

GuardedMemory::~GuardedMemory() {
  munmap(begin_, bytes_);
}

}  // namespace tolvane::test
