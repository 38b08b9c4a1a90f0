#include "app/patch_storage.h"

#include <QFile>
#include <array>
#include <cstdint>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tolvane {

namespace {

constexpr std::size_t kLargestPatchBytes = std::size_t{256} << 20U;
/// What is longer is no patch that anybody would miss; it is cut first.
constexpr std::size_t kMostPaddedBytes = std::size_t{16} << 20U;

/// An open file.
class OpenFile {
 public:
  /// Never waits for the other end of a FIFO.
  OpenFile(const QString& path, int flags)
      : descriptor_(
            ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666)) {
    isRegular_ = descriptor_ >= 0 && ::fstat(descriptor_, &state_) == 0 && S_ISREG(state_.st_mode);
  }
  ~OpenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }
  [[nodiscard]] bool isRegular() const { return isRegular_; }
  [[nodiscard]] std::uint64_t bytes() const { return static_cast<std::uint64_t>(state_.st_size); }

 private:
  int descriptor_;
  struct stat state_ {};
  bool isRegular_ = false;
};

/// Returns whether all of it has been written.
bool writeAt(int descriptor, std::string_view text, std::size_t offset) {
  while (!text.empty()) {
    const ssize_t count = ::pwrite(descriptor, text.data(), text.size(), static_cast<off_t>(offset));
    if (count <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
    offset += static_cast<std::size_t>(count);
  }
  return true;
}

bool cutAt(int descriptor, std::size_t bytes) {
  return ::ftruncate(descriptor, static_cast<off_t>(bytes)) == 0;
}

}  // namespace

std::optional<std::string> readPatchText(const QString& path) {
  const OpenFile file(path, O_RDONLY);
  if (!file.isRegular() || file.bytes() > kLargestPatchBytes) return std::nullopt;
  std::string text;
  std::array<char, 65536> chunk{};
  for (;;) {
    const ssize_t count = ::read(file.descriptor(), chunk.data(), chunk.size());
    if (count == 0) return text;
    if (count < 0 || text.size() > kLargestPatchBytes) return std::nullopt;
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
}

void writePatchText(const QString& path, std::string_view text) {
  const OpenFile file(path, O_WRONLY | O_CREAT);
  if (!file.isRegular()) return;
  const int descriptor = file.descriptor();
  auto before = static_cast<std::size_t>(file.bytes());
  if (before > kMostPaddedBytes) {
    if (!cutAt(descriptor, text.size())) return;
    before = text.size();
  }
  // The disk's room comes first: spaces after the old text mean nothing.
  if (before < text.size() && !writeAt(descriptor, std::string(text.size() - before, ' '), before)) {
    static_cast<void>(cutAt(descriptor, before));
    return;
  }
  std::string padded(text);
  if (before > text.size()) padded.append(before - text.size(), ' ');
  if (writeAt(descriptor, padded, 0)) static_cast<void>(cutAt(descriptor, text.size()));
}

}  // namespace tolvane
