#include "hal/aggregates/aggregate_file.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace tolvane::hal {

namespace {

constexpr std::size_t kMaxFileBytes = std::size_t{1} << 20;

std::string absoluteOrEmpty(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && value[0] == '/' ? value : "";
}

/// Reads the whole file. Returns an errno value, or 0.
int readAll(const std::string& path, std::string& text) {
  // Nonblocking: if the path is a pipe, open() must not wait for a writer.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return errno;
  std::array<char, 4096> block{};
  ssize_t count = 0;
  int error = 0;
  while ((count = ::read(descriptor, block.data(), block.size())) != 0) {
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) error = errno;
    if (count > 0) text.append(block.data(), static_cast<std::size_t>(count));
    if (count > 0 && text.size() > kMaxFileBytes) error = EFBIG;
    if (error != 0) break;
  }
  ::close(descriptor);
  return error;
}

}  // namespace

std::string aggregateFilePath() {
  std::string folder = absoluteOrEmpty("XDG_CONFIG_HOME");
  if (folder.empty()) {
    const std::string home = absoluteOrEmpty("HOME");
    if (home.empty()) return {};
    folder = home + "/.config";
  }
  return folder + "/tolvane/aggregates.json";
}

AggregateRead readAggregateFile(const std::string& path) {
  std::string text;
  const int error = readAll(path, text);
  if (error == ENOENT || error == ENOTDIR) return {AggregateDocument(), {}};
  if (error != 0) return {std::nullopt, path + ": " + std::generic_category().message(error)};
  AggregateRead result = AggregateDocument::parse(std::move(text));
  if (!result.document) result.error = path + ": " + result.error;
  return result;
}

const std::vector<Aggregate>& AggregateFile::aggregates() {
  const auto now = stamp();
  if (now == read_) return aggregates_;
  read_ = now;
  AggregateRead result = readAggregateFile(path_);
  aggregates_ = result.document ? result.document->aggregates() : std::vector<Aggregate>{};
  return aggregates_;
}

std::optional<AggregateFile::Stamp> AggregateFile::stamp() const {
  struct stat found {};
  if (path_.empty() || ::stat(path_.c_str(), &found) != 0) return std::nullopt;
  return Stamp{found.st_dev, found.st_ino, found.st_size, found.st_mtim.tv_sec, found.st_mtim.tv_nsec};
}

}  // namespace tolvane::hal
