#include <cstdio>
#include <exception>
#include <new>

#include "ctl/command_line.h"
#include "ctl/process/early_end.h"
#include "ctl/process/standard_descriptors.h"
#include "ctl/terminal/messages.h"

namespace {

using tolvane::ctl::endForWantOf;
using tolvane::ctl::ExitStatus;

/// Makes it a failure if the output could not be written, for example on a full disk.
ExitStatus afterFlush(ExitStatus status) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  tolvane::ctl::say("standard output cannot be written");
  return status == ExitStatus::done ? ExitStatus::failed : status;
}

}  // namespace

int main(int argc, char** argv) {
  if (!tolvane::ctl::openStandardDescriptors()) endForWantOf("/dev/null cannot be opened");
  tolvane::ctl::prepareForEarlyEnds();
  // Caught here, not by the terminate handler, so that the destructors on the stack run first.
  try {
    return static_cast<int>(afterFlush(tolvane::ctl::runCommandLine(argc, argv)));
  } catch (const std::bad_alloc&) {
    endForWantOf("out of memory");
  } catch (const std::exception& error) {
    endForWantOf(error.what());
  }
}
