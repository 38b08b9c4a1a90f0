// Sound files as blocks of interleaved 32-bit float frames, read and written with libsndfile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <sndfile.h>

#include "base/result.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

/// The library's limit.
inline constexpr std::int64_t kMostFileChannels = 1024;

struct SoundFileCloser {
  void operator()(SNDFILE* file) const noexcept { sf_close(file); }
};
using SoundFileHandle = std::unique_ptr<SNDFILE, SoundFileCloser>;

/// Reads a sound file in any format that the library knows. Scales integer samples to -1..1. Leaves float
/// samples unchanged, including those beyond 1, NaN and infinity. [not-io]
class SoundReader {
 public:
  /// Failure: the file cannot be opened, has no known format, or is cut off. With `partial`, a cut-off or
  /// damaged file is no failure, here or in read(): it is read as far as it goes.
  [[nodiscard]] static Result<SoundReader, Failure> open(const std::string& path, bool partial);

  [[nodiscard]] std::int32_t channels() const noexcept { return info_.channels; }
  [[nodiscard]] std::int32_t sampleRateHz() const noexcept { return info_.samplerate; }
  /// The frame count in the file's header; none if it is unknown, as for a pipe.
  [[nodiscard]] std::optional<std::int64_t> frames() const noexcept;

  /// Reads up to `frames` frames into `samples` and returns their number, 0 at the end. Failure: the file is
  /// damaged, or ends before the frame count in its header.
  [[nodiscard]] Result<std::size_t, Failure> read(float* samples, std::size_t frames);

  /// A message about what is missing of the file, as far as open() and read() have found out; none if nothing
  /// is missing.
  [[nodiscard]] std::optional<std::string> shortfall() const;

 private:
  SoundReader(std::string path, SoundFileHandle file, const SF_INFO& info, bool partial)
      : path_(std::move(path)), file_(std::move(file)), info_(info), partial_(partial) {}

  [[nodiscard]] Failure cutOff() const;

  std::string path_;
  SoundFileHandle file_;
  SF_INFO info_;
  bool partial_;
  bool damaged_ = false;  // the rest cannot be read
  std::int64_t framesRead_ = 0;
  std::optional<std::string> shortfall_;
};

/// The properties of a new sound file.
struct SoundShape {
  std::int32_t channels;
  std::int32_t sampleRateHz;
  std::optional<std::int64_t> frames;  // to be written; none if unknown
};

/// Writes a WAV file of 32-bit float samples, or an RF64 file beyond 4 GB. The same samples give the same
/// bytes, except in RF64 and files of unknown length, which contain the time of writing. [not-io]
class SoundWriter {
 public:
  /// Writes to `descriptor`, an empty file open for writing. The caller still owns and closes it. `path` is
  /// for messages.
  [[nodiscard]] static Result<SoundWriter, Failure> create(const std::string& path, int descriptor,
                                                           const SoundShape& shape);

  /// Appends frames. Failure: the file cannot be written, for example on a full disk.
  [[nodiscard]] std::optional<Failure> write(const float* samples, std::size_t frames);

  /// Writes what is still buffered, and the header. Without a failure the file is complete. Call last.
  [[nodiscard]] std::optional<Failure> finish();

 private:
  SoundWriter(std::string path, SoundFileHandle file) : path_(std::move(path)), file_(std::move(file)) {}

  std::string path_;
  SoundFileHandle file_;
};

}  // namespace tolvane::ctl
