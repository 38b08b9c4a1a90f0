// Sound files by libsndfile, as blocks of interleaved 32-bit float frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <sndfile.h>

#include "core/result.h"
#include "ctl/failure.h"

namespace tolvane::ctl {

/// What the library can hold in one file.
inline constexpr std::int64_t kMostFileChannels = 1024;

struct SoundFileCloser {
  void operator()(SNDFILE* file) const noexcept { sf_close(file); }
};
using SoundFileHandle = std::unique_ptr<SNDFILE, SoundFileCloser>;

/// A sound file being read, in any format the library knows. Integer samples are scaled to -1..1; float
/// samples come as they are, beyond 1 and not finite alike. [not-io]
class SoundReader {
 public:
  /// With `partial` a file whose end is missing is read as far as it goes, and is no failure anywhere.
  /// Failure: there is no such file, it is in no known format, or its end is missing.
  [[nodiscard]] static Result<SoundReader, Failure> open(const std::string& path, bool partial);

  [[nodiscard]] std::int32_t channels() const noexcept { return info_.channels; }
  [[nodiscard]] std::int32_t sampleRateHz() const noexcept { return info_.samplerate; }
  /// The frames that the file says it has; none when it cannot know (a pipe).
  [[nodiscard]] std::optional<std::int64_t> frames() const noexcept;

  /// Fills `samples` with up to `frames` frames; 0 at the end. Failure: the file is damaged, or ends before
  /// the frames that it says it has.
  [[nodiscard]] Result<std::size_t, Failure> read(float* samples, std::size_t frames);

  /// What was promised and is not there, for the user, so far as it has shown itself by now.
  [[nodiscard]] std::optional<std::string> shortfall() const;

 private:
  SoundReader(std::string path, SoundFileHandle file, const SF_INFO& info, bool partial)
      : path_(std::move(path)), file_(std::move(file)), info_(info), partial_(partial) {}

  [[nodiscard]] Failure cutOff() const;

  std::string path_;
  SoundFileHandle file_;
  SF_INFO info_;
  bool partial_;
  bool damaged_ = false;  // what follows cannot be read
  std::int64_t framesRead_ = 0;
  std::optional<std::string> shortfall_;
};

/// What a new sound file is to be.
struct SoundShape {
  std::int32_t channels;
  std::int32_t sampleRateHz;
  std::optional<std::int64_t> frames;  // that will be written; none when that is not known
};

/// A WAV file of 32-bit float samples being written, RF64 where it is beyond 4 GB. The same samples give the
/// same bytes (RF64, and a file of unknown length, also hold the time of day). [not-io]
class SoundWriter {
 public:
  /// Writes to `descriptor`, an empty file open for writing, which stays the caller's. `path` is for
  /// messages.
  [[nodiscard]] static Result<SoundWriter, Failure> create(const std::string& path, int descriptor,
                                                           const SoundShape& shape);

  /// Appends frames. Failure: the disk is full, or broken.
  [[nodiscard]] std::optional<Failure> write(const float* samples, std::size_t frames);

  /// Writes what is still to be written: the file is whole when there is no failure. To be called last.
  [[nodiscard]] std::optional<Failure> finish();

 private:
  SoundWriter(std::string path, SoundFileHandle file) : path_(std::move(path)), file_(std::move(file)) {}

  std::string path_;
  SoundFileHandle file_;
};

}  // namespace tolvane::ctl
