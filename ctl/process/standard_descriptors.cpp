#include "ctl/process/standard_descriptors.h"

#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace tolvane::ctl {

bool openStandardDescriptors() noexcept {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    const bool isOpen = ::fcntl(descriptor, F_GETFD) >= 0;
    // open() returns the lowest free number, and all below this one are in use.
    if (!isOpen && ::open("/dev/null", O_RDWR) != descriptor) return false;
  }
  return true;
}

}  // namespace tolvane::ctl
