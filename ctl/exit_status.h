#pragma once

namespace tolvane::ctl {

/// What the program's exit status says; scripts rely on the numbers.
enum class ExitStatus : int {
  done = 0,
  failed = 1,        // a file, a device or a server let us down
  usage = 2,         // the arguments make no sense
  badPatch = 3,      // a patch file is not one
  noSuchDevice = 4,  // no device, or not exactly one, is called that
};

}  // namespace tolvane::ctl
