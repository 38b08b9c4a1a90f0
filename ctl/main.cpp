#include <cstdio>

#include "ctl/command_line.h"
#include "ctl/messages.h"

namespace {

using tolvane::ctl::ExitStatus;

/// Output that could not be written (a full disk) is a failure, whatever the command said.
ExitStatus afterFlush(ExitStatus status) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  tolvane::ctl::say("standard output cannot be written");
  return status == ExitStatus::done ? ExitStatus::failed : status;
}

}  // namespace

int main(int argc, char** argv) {
  return static_cast<int>(afterFlush(tolvane::ctl::runCommandLine(argc, argv)));
}
