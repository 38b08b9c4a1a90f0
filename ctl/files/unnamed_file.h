// Files without a name. The system removes such a file when its process ends, however it ends.
#pragma once

#include <string>

namespace tolvane::ctl {

/// Creates an unnamed file in the folder, open for reading and writing, with the usual mode of a new file
/// (0666 less the umask). Returns -1 on failure, also if the system or the file system has no such files or
/// nameFile() could not work. [not-io]
[[nodiscard]] int openUnnamedFile(const std::string& folder);

/// Gives the file a name. Returns false and sets errno on failure; EEXIST if the name is taken. [not-io]
[[nodiscard]] bool nameFile(int descriptor, const std::string& path);

}  // namespace tolvane::ctl
