#include "ctl/render/sound_file.h"

#include "ctl/render/missing_end.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

/// The bytes of one frame; 0 for a format whose samples have no fixed size.
std::int64_t frameBytes(const SF_INFO& info) {
  const auto frameOf = [&info](std::int64_t sampleBytes) { return sampleBytes * info.channels; };
  switch (info.format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW:
      return frameOf(1);
    case SF_FORMAT_PCM_16:
      return frameOf(2);
    case SF_FORMAT_PCM_24:
      return frameOf(3);
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT:
      return frameOf(4);
    case SF_FORMAT_DOUBLE:
      return frameOf(8);
    default:
      return 0;
  }
}

/// The frame count stated in the header of a stream; none if unknown.
std::optional<std::int64_t> framesOfStream(const SF_INFO& info) {
  constexpr std::int64_t kMostFrames = std::int64_t{1} << 48;
  const std::int64_t bytes = frameBytes(info);
  if (bytes == 0 || info.frames <= 0 || info.frames > kMostFrames) return std::nullopt;
  if (standsForAnySize(static_cast<std::uint64_t>(info.frames * bytes))) return std::nullopt;
  return info.frames;
}

/// True if the 32-bit sizes in a plain WAV header can hold the sound.
bool fitsWav(const SoundShape& shape) {
  constexpr std::int64_t kLargestData = 0xFFFFFFFF - 4096;  // with room for the header
  const std::int64_t frameBytes = std::int64_t{shape.channels} * static_cast<std::int64_t>(sizeof(float));
  return shape.frames && *shape.frames <= kLargestData / frameBytes;
}

}  // namespace

Result<SoundReader, Failure> SoundReader::open(const std::string& path, bool partial) {
  SF_INFO info{};
  SoundFileHandle file(sf_open(path.c_str(), SFM_READ, &info));
  if (!file) return Failure{about(path, sf_strerror(nullptr))};
  SoundReader reader(path, std::move(file), info, partial);
  if (info.seekable == 0) return reader;
  if (const auto missing = missingEnd(path)) {
    reader.shortfall_ = *missing;
    if (!partial) return reader.cutOff();
  }
  return reader;
}

std::optional<std::int64_t> SoundReader::frames() const noexcept {
  if (info_.seekable == 0 || info_.frames < 0 || info_.frames == SF_COUNT_MAX) return std::nullopt;
  return info_.frames;
}

Result<std::size_t, Failure> SoundReader::read(float* samples, std::size_t frames) {
  if (damaged_) return std::size_t{0};
  const sf_count_t count = sf_readf_float(file_.get(), samples, static_cast<sf_count_t>(frames));
  damaged_ = sf_error(file_.get()) != SF_ERR_NO_ERROR;
  if (damaged_ && !partial_) return Failure{about(path_, sf_strerror(file_.get()))};
  framesRead_ += count;
  const std::optional<std::int64_t> promised = info_.seekable != 0 ? this->frames() : framesOfStream(info_);
  if ((count == 0 || damaged_) && promised && framesRead_ < *promised && !shortfall_) {
    shortfall_ =
        "only " + std::to_string(framesRead_) + " of " + std::to_string(*promised) + " frames are there";
    if (!partial_) return cutOff();
  }
  return static_cast<std::size_t>(count);
}

std::optional<std::string> SoundReader::shortfall() const {
  if (!shortfall_) return std::nullopt;
  return about(path_, "is cut off: " + *shortfall_);
}

Failure SoundReader::cutOff() const {
  return {*shortfall() + "; --partial renders what is there"};
}

Result<SoundWriter, Failure> SoundWriter::create(const std::string& path, int descriptor,
                                                 const SoundShape& shape) {
  SF_INFO info{};
  info.channels = shape.channels;
  info.samplerate = shape.sampleRateHz;
  info.format = (fitsWav(shape) ? SF_FORMAT_WAV : SF_FORMAT_RF64) | SF_FORMAT_FLOAT;
  SoundFileHandle file(sf_open_fd(descriptor, SFM_WRITE, &info, SF_FALSE));
  if (!file) return Failure{about(path, sf_strerror(nullptr))};
  // No peak chunk: it contains the time of writing. RF64 files contain that time nevertheless.
  sf_command(file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
  // Written as RF64, a file of unknown length becomes a plain WAV file at the end if it fits.
  sf_command(file.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
  return SoundWriter(path, std::move(file));
}

std::optional<Failure> SoundWriter::write(const float* samples, std::size_t frames) {
  const auto wanted = static_cast<sf_count_t>(frames);
  if (sf_writef_float(file_.get(), samples, wanted) == wanted) return std::nullopt;
  return Failure{about(path_, sf_strerror(file_.get()))};
}

std::optional<Failure> SoundWriter::finish() {
  const int error = sf_close(file_.release());
  if (error == SF_ERR_NO_ERROR) return std::nullopt;
  return Failure{about(path_, sf_error_number(error))};
}

}  // namespace tolvane::ctl
