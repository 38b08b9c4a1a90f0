#include <fcntl.h>
#include <unistd.h>

#include "ctl/files/unnamed_file.h"

namespace tolvane::ctl {

namespace {

/// A path to an unnamed file. Linking by the descriptor itself would need a privilege.
std::string linkTo(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace

int openUnnamedFile(const std::string& folder) {
  const int descriptor = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
  if (descriptor < 0) return -1;
  // Without /proc the file could never get a name.
  if (::access(linkTo(descriptor).c_str(), F_OK) == 0) return descriptor;
  ::close(descriptor);
  return -1;
}

bool nameFile(int descriptor, const std::string& path) {
  return ::linkat(AT_FDCWD, linkTo(descriptor).c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

}  // namespace tolvane::ctl
