// Files without a name: nothing is left of one when its process ends, however it ends.
#pragma once

#include <string>

namespace tolvane::ctl {

/// Opens a new file in the folder for reading and writing, with the mode of any new file. -1 where the
/// system, or the file system there, has no such files, or could not name one. [not-io]
[[nodiscard]] int openUnnamedFile(const std::string& folder);

/// Gives it a name that is not taken. False with the reason in errno: EEXIST when it is. [not-io]
[[nodiscard]] bool nameFile(int descriptor, const std::string& path);

}  // namespace tolvane::ctl
