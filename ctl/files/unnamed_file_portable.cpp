#include <cerrno>

#include "ctl/files/unnamed_file.h"

namespace tolvane::ctl {

int openUnnamedFile(const std::string& /*folder*/) {
  return -1;
}

bool nameFile(int /*descriptor*/, const std::string& /*path*/) {
  errno = ENOTSUP;
  return false;
}

}  // namespace tolvane::ctl
