#include "ctl/pending_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tolvane::ctl {

namespace {

struct Freer {
  void operator()(char* memory) const noexcept { std::free(memory); }
};

/// Where a path leads in the end; the path itself when nothing is there yet.
std::string resolved(const std::string& path) {
  const std::unique_ptr<char, Freer> real(::realpath(path.c_str(), nullptr));
  return real ? std::string(real.get()) : path;
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

/// Flushes to the disk; a file system that cannot be asked to is no failure.
bool makeLasting(int descriptor) {
  return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

/// The name itself is lasting once its folder is.
void makeNameLasting(const std::string& path) {
  const int folder = ::open(folderOf(path).c_str(), O_RDONLY | O_CLOEXEC);
  if (folder < 0) return;
  ::fsync(folder);
  ::close(folder);
}

}  // namespace

Result<PendingFile, Failure> PendingFile::create(const std::string& path) {
  const std::string target = resolved(path);
  struct stat existing {};
  const bool exists = ::stat(target.c_str(), &existing) == 0;
  if (exists && !S_ISREG(existing.st_mode)) return Failure{path + ": is not a regular file"};

  std::string temporary = folderOf(target) + "/.tolvanectl-" + std::to_string(::getpid()) + ".part";
  const int descriptor = ::open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor < 0) return systemFailure(path, errno);
  // Who may read the old file may read the new one, and nobody else; where that cannot be, nothing is lost.
  if (exists && ::fchmod(descriptor, existing.st_mode & 0777U) != 0) errno = 0;
  return PendingFile(target, std::move(temporary), descriptor);
}

PendingFile::PendingFile(PendingFile&& other) noexcept
    : path_(std::move(other.path_)),
      temporary_(std::exchange(other.temporary_, {})),
      descriptor_(std::exchange(other.descriptor_, -1)) {}

PendingFile::~PendingFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

std::optional<Failure> PendingFile::commit() {
  if (!makeLasting(descriptor_)) return systemFailure(path_, errno);
  if (std::rename(temporary_.c_str(), path_.c_str()) != 0) return systemFailure(path_, errno);
  temporary_.clear();
  makeNameLasting(path_);
  return std::nullopt;
}

}  // namespace tolvane::ctl
