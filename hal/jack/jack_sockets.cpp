#include "hal/jack/jack_sockets.h"

#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace tolvane::hal {

namespace {

constexpr auto kFolder = "/dev/shm";

struct FolderCloser {
  void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

bool isSocket(int folder, const char* name) noexcept {
  struct stat entry {};
  return ::fstatat(folder, name, &entry, AT_SYMLINK_NOFOLLOW) == 0 && S_ISSOCK(entry.st_mode);
}

}  // namespace

bool mayHaveJackServer(const JackLibrary& library) noexcept {
  if (!library.isJackd2) return true;
  const std::unique_ptr<DIR, FolderCloser> folder(::opendir(kFolder));
  if (!folder) return true;
  while (const dirent* const entry = ::readdir(folder.get())) {
    if (std::string_view(&entry->d_name[0]).starts_with("jack_") &&
        isSocket(::dirfd(folder.get()), &entry->d_name[0])) {
      return true;
    }
  }
  return false;
}

}  // namespace tolvane::hal
