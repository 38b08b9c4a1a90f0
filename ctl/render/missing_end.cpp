#include "ctl/render/missing_end.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tolvane::ctl {

namespace {

/// Reads a file's bytes at any offset.
class FileBytes {
 public:
  explicit FileBytes(const std::string& path)
      : descriptor_(path == "-" ? ::dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct stat found {};
    if (descriptor_ >= 0 && ::fstat(descriptor_, &found) == 0) size_ = found.st_size;
  }
  FileBytes(const FileBytes&) = delete;
  FileBytes& operator=(const FileBytes&) = delete;
  ~FileBytes() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  [[nodiscard]] std::int64_t size() const noexcept { return size_; }

  /// Returns `count` bytes, fewer at the end of the file.
  [[nodiscard]] std::string at(std::int64_t offset, std::size_t count) const {
    std::string bytes(count, '\0');
    const ssize_t got = ::pread(descriptor_, bytes.data(), count, offset);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(0, got)));
    return bytes;
  }

 private:
  int descriptor_;
  std::int64_t size_ = 0;
};

std::uint64_t integerOf(std::string bytes, bool bigEndian) {
  if (!bigEndian) std::reverse(bytes.begin(), bytes.end());
  std::uint64_t value = 0;
  for (const char byte : bytes) value = value << 8U | static_cast<unsigned char>(byte);
  return value;
}

/// How a format divides its files into chunks. A chunk is an identifier, a size and a body.
struct ChunkFormat {
  std::string_view magic;  // the first bytes of the file
  std::int64_t firstChunk;
  std::int64_t idBytes;
  std::int64_t sizeBytes;
  bool bigEndian;
  bool sizeHasHeader;      // the size includes the chunk's identifier and size fields
  std::int64_t alignment;  // of a chunk
  std::string_view soundId;
  std::int64_t soundOffset;  // within that chunk's body
};

constexpr ChunkFormat kChunkFormats[] = {
    {"RIFF", 12, 4, 4, false, false, 2, "data", 0}, {"RIFX", 12, 4, 4, true, false, 2, "data", 0},
    {"RF64", 12, 4, 4, false, false, 2, "data", 0}, {"riff", 40, 16, 8, false, true, 8, "data", 0},
    {"FORM", 12, 4, 4, true, false, 2, "SSND", 8},
};

/// Bytes of sound: as many as the header states, and as many as the file holds.
struct SoundBytes {
  std::int64_t promised = 0;
  std::int64_t there = 0;
};

/// The size that the sound chunk's header states, and the bytes that follow it. Both 0 if no size is stated
/// or no sound chunk is found.
SoundBytes soundBytes(const FileBytes& file, const ChunkFormat& format) {
  constexpr int kMostChunks = 10000;
  constexpr std::uint64_t kIsElsewhere = 0xFFFFFFFF;
  std::uint64_t sizeElsewhere = kIsElsewhere;
  std::int64_t offset = format.firstChunk;
  for (int chunk = 0; chunk < kMostChunks && offset < file.size(); ++chunk) {
    const std::int64_t headerBytes = format.idBytes + format.sizeBytes;
    const std::string header = file.at(offset, static_cast<std::size_t>(headerBytes));
    if (header.size() < static_cast<std::size_t>(headerBytes)) return {};
    std::uint64_t size = integerOf(header.substr(static_cast<std::size_t>(format.idBytes)), format.bigEndian);
    if (format.sizeHasHeader) size -= std::min(size, static_cast<std::uint64_t>(headerBytes));
    const std::int64_t body = offset + headerBytes;
    if (header.starts_with("ds64")) sizeElsewhere = integerOf(file.at(body + 8, 8), format.bigEndian);
    if (header.starts_with(format.soundId)) {
      if (size == kIsElsewhere) size = sizeElsewhere;
      if (standsForAnySize(size)) return {};
      return {std::max<std::int64_t>(0, static_cast<std::int64_t>(size) - format.soundOffset),
              std::max<std::int64_t>(0, file.size() - body - format.soundOffset)};
    }
    if (size > static_cast<std::uint64_t>(file.size())) return {};
    const auto unaligned = static_cast<std::int64_t>(size) + format.alignment - 1;
    offset = body + unaligned - unaligned % format.alignment;
  }
  return {};
}

/// The same for AU, which has no chunks: bytes 4 to 7 are the offset of the sound, bytes 8 to 11 its size.
SoundBytes soundBytesOfAu(const FileBytes& file) {
  const std::uint64_t offset = integerOf(file.at(4, 4), true);
  const std::uint64_t size = integerOf(file.at(8, 4), true);
  if (standsForAnySize(size)) return {};
  return {static_cast<std::int64_t>(size),
          std::max<std::int64_t>(0, file.size() - static_cast<std::int64_t>(offset))};
}

std::optional<std::string> missingSound(const SoundBytes& bytes) {
  if (bytes.there >= bytes.promised) return std::nullopt;
  return "only " + std::to_string(bytes.there) + " of " + std::to_string(bytes.promised) +
         " bytes of sound are there";
}

/// True if the file's last page is complete and marked as the last of its stream.
bool hasLastOggPage(const FileBytes& file) {
  constexpr std::int64_t kLargestPage = 65307;
  constexpr std::size_t kHeaderBytes = 27;
  constexpr unsigned kEndOfStream = 4;
  const std::int64_t begin = std::max<std::int64_t>(0, file.size() - 2 * kLargestPage);
  const std::string end = file.at(begin, static_cast<std::size_t>(file.size() - begin));
  const std::size_t page = end.rfind("OggS");
  if (page == std::string::npos || end.size() - page < kHeaderBytes) return false;
  const auto byteAt = [&end, page](std::size_t i) { return static_cast<unsigned char>(end[page + i]); };
  const std::size_t segments = byteAt(kHeaderBytes - 1);
  std::size_t length = kHeaderBytes + segments;
  if (end.size() - page < length) return false;
  for (std::size_t i = 0; i < segments; ++i) length += byteAt(kHeaderBytes + i);
  return end.size() - page >= length && (byteAt(5) & kEndOfStream) != 0;
}

}  // namespace

std::optional<std::string> missingEnd(const std::string& path) {
  const FileBytes file(path);
  const std::string magic = file.at(0, 4);
  if (magic == "OggS") {
    if (hasLastOggPage(file)) return std::nullopt;
    return "the last page of its Ogg stream is not there";
  }
  if (magic == ".snd") return missingSound(soundBytesOfAu(file));
  const auto* const format = std::find_if(std::begin(kChunkFormats), std::end(kChunkFormats),
                                          [&magic](const ChunkFormat& f) { return f.magic == magic; });
  if (format == std::end(kChunkFormats)) return std::nullopt;
  return missingSound(soundBytes(file, *format));
}

bool standsForAnySize(std::uint64_t bytes) noexcept {
  // Values near the largest that 31 and 32 bits hold (programs subtract a header, or round), and every value
  // beyond 63 bits.
  return (bytes >= 0x7F000000 && bytes <= 0x80000000) || (bytes >= 0xFFFF0000 && bytes <= 0xFFFFFFFF) ||
         bytes > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
}

}  // namespace tolvane::ctl
