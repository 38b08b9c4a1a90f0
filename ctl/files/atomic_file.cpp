#include "ctl/files/atomic_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ctl/files/unnamed_file.h"
#include "ctl/process/early_end.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

/// Follows the symbolic links of a path to the end; the target need not exist. Failure: the links form a
/// loop.
Result<std::string, Failure> endOfLinks(const std::string& path) {
  constexpr int kMostLinks = 40;  // as many as the system follows
  std::filesystem::path end = path;
  for (int links = 0; links <= kMostLinks; ++links) {
    std::error_code isNoLink;
    const std::filesystem::path next = std::filesystem::read_symlink(end, isNoLink);
    if (isNoLink) return end.string();
    end = end.parent_path() / next;
  }
  return systemFailure(path, ELOOP);
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

/// Calls `make` with random names in the folder until one is free. Returns the name; on failure, an empty
/// string with the reason in errno.
template <class Make>
std::string underNewName(const std::string& folder, Make make) {
  constexpr int kAttempts = 100;
  std::random_device random;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::string name = folder + "/.tolvanectl-" + std::to_string(random()) + ".part";
    if (make(name)) return name;
    if (errno != EEXIST) break;
  }
  return {};
}

/// Flushes the file to disk. A file system without fsync is no failure.
bool makeLasting(int descriptor) {
  return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

/// Flushes the folder to disk, which holds the file's name.
void makeNameLasting(const std::string& path) {
  const int folder = ::open(folderOf(path).c_str(), O_RDONLY | O_CLOEXEC);
  if (folder < 0) return;
  ::fsync(folder);
  ::close(folder);
}

}  // namespace

Result<AtomicFile, Failure> AtomicFile::create(const std::string& path) {
  struct stat existing {};
  const bool exists = ::stat(path.c_str(), &existing) == 0;
  if (exists && !S_ISREG(existing.st_mode)) return Failure{about(path, "is not a regular file")};
  const auto target = endOfLinks(path);
  if (!target) return target.error();

  const std::string folder = folderOf(target.value());
  const SignalsHeld held;
  std::string temporary;
  int descriptor = openUnnamedFile(folder);
  if (descriptor < 0) {
    temporary = underNewName(folder, [&descriptor](const std::string& name) {
      descriptor = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      return descriptor >= 0;
    });
    removeAtEarlyEnd(temporary.c_str());
  }
  if (descriptor < 0) return systemFailure(path, errno);
  // Keep the old file's permissions. A failure is ignored: the content is what matters.
  if (exists && ::fchmod(descriptor, existing.st_mode & 0777U) != 0) errno = 0;
  return AtomicFile(target.value(), std::move(temporary), descriptor);
}

AtomicFile::AtomicFile(AtomicFile&& other) noexcept
    : path_(std::move(other.path_)),
      temporary_(std::exchange(other.temporary_, {})),
      descriptor_(std::exchange(other.descriptor_, -1)) {}

AtomicFile::~AtomicFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
  if (temporary_.empty()) return;
  ::unlink(temporary_.c_str());
  removeAtEarlyEnd(nullptr);
}

bool AtomicFile::write(std::string_view text) const {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor_, text.data(), text.size());
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

std::optional<Failure> AtomicFile::commit() {
  if (!makeLasting(descriptor_) || !takeName()) return systemFailure(path_, errno);
  makeNameLasting(path_);
  return std::nullopt;
}

bool AtomicFile::takeName() {
  const SignalsHeld held;
  if (temporary_.empty()) {
    if (nameFile(descriptor_, path_)) return true;
    if (errno != EEXIST) return false;
    // rename() needs a named file to replace the old one.
    temporary_ = underNewName(folderOf(path_),
                              [this](const std::string& name) { return nameFile(descriptor_, name); });
    if (temporary_.empty()) return false;
  }
  if (std::rename(temporary_.c_str(), path_.c_str()) != 0) return false;
  removeAtEarlyEnd(nullptr);
  temporary_.clear();
  return true;
}

}  // namespace tolvane::ctl
