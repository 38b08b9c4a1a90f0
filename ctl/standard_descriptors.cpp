#include "ctl/standard_descriptors.h"

#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace tolvane::ctl {

bool openStandardDescriptors() noexcept {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    const bool isOpen = ::fcntl(descriptor, F_GETFD) >= 0;
    // The system gives the lowest number that is free, and those below are taken.
    if (!isOpen && ::open("/dev/null", O_RDWR) != descriptor) return false;
  }
  return true;
}

}  // namespace tolvane::ctl
