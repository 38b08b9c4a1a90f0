#pragma once

namespace tolvane::ctl {

/// The program's exit status. Scripts rely on the numbers.
enum class ExitStatus : int {
  done = 0,
  failed = 1,        // an error of a file, a device or a server
  usage = 2,         // invalid arguments
  badPatch = 3,      // a patch file is invalid
  noSuchDevice = 4,  // no device matches, or several do
};

}  // namespace tolvane::ctl
