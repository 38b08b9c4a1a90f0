#include "ctl/aggregate/store.h"

#include <cerrno>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ctl/files/atomic_file.h"
#include "ctl/terminal/printable.h"
#include "hal/aggregates/aggregate_file.h"

namespace tolvane::ctl {

namespace {

/// Creates the folder and its parents where missing. Returns 0, or the errno value.
int makeFolder(const std::string& path) {
  for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    if (::mkdir(path.substr(0, end).c_str(), 0700) != 0 && errno != EEXIST) return errno;
    if (end == std::string::npos) return 0;
  }
}

Failure noPlace() {
  return {"neither XDG_CONFIG_HOME nor HOME says where aggregates are kept"};
}

}  // namespace

Result<hal::AggregateDocument, Failure> readAggregates() {
  const std::string path = hal::aggregateFilePath();
  if (path.empty()) return noPlace();
  hal::AggregateRead read = hal::readAggregateFile(path);
  if (!read.document) return Failure{printable(read.error)};
  return std::move(*read.document);
}

Result<AggregateStore, Failure> AggregateStore::open() {
  const std::string path = hal::aggregateFilePath();
  if (path.empty()) return noPlace();
  const std::string folder = path.substr(0, path.rfind('/'));
  if (const int error = makeFolder(folder); error != 0) return systemFailure(folder, error);
  const int lock = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (lock < 0) return systemFailure(folder, errno);
  AggregateStore store(path, lock);
  while (::flock(lock, LOCK_EX) != 0) {
    if (errno != EINTR) return systemFailure(folder, errno);
  }
  auto document = readAggregates();
  if (!document) return document.error();
  store.document_ = std::move(document).value();
  return store;
}

AggregateStore::AggregateStore(AggregateStore&& other) noexcept
    : path_(std::move(other.path_)),
      lock_(std::exchange(other.lock_, -1)),
      document_(std::move(other.document_)) {}

AggregateStore::~AggregateStore() {
  if (lock_ >= 0) ::close(lock_);
}

std::optional<Failure> AggregateStore::write(const std::string& text) {
  std::signal(SIGXFSZ, SIG_IGN);  // a file size limit then fails the write, which cleans up
  auto pending = AtomicFile::create(path_);
  if (!pending) return pending.error();
  AtomicFile file = std::move(pending).value();
  if (!file.write(text)) return systemFailure(path_, errno);
  return file.commit();
}

}  // namespace tolvane::ctl
