#include "ctl/sound_file.h"

namespace tolvane::ctl {

namespace {

/// Whether the sizes in a plain WAV file's header, of 32 bits, hold it.
bool fitsWav(const SoundShape& shape) {
  constexpr std::int64_t kLargestData = 0xFFFFFFFF - 4096;  // with room for the header
  const std::int64_t frameBytes = std::int64_t{shape.channels} * static_cast<std::int64_t>(sizeof(float));
  return shape.frames && *shape.frames <= kLargestData / frameBytes;
}

}  // namespace

Result<SoundReader, Failure> SoundReader::open(const std::string& path) {
  SF_INFO info{};
  SoundFileHandle file(sf_open(path.c_str(), SFM_READ, &info));
  if (!file) return Failure{path + ": " + sf_strerror(nullptr)};
  return SoundReader(path, std::move(file), info);
}

std::optional<std::int64_t> SoundReader::frames() const noexcept {
  if (info_.seekable == 0 || info_.frames < 0 || info_.frames == SF_COUNT_MAX) return std::nullopt;
  return info_.frames;
}

Result<std::size_t, Failure> SoundReader::read(float* samples, std::size_t frames) {
  const sf_count_t count = sf_readf_float(file_.get(), samples, static_cast<sf_count_t>(frames));
  if (sf_error(file_.get()) != SF_ERR_NO_ERROR) return Failure{path_ + ": " + sf_strerror(file_.get())};
  framesRead_ += count;
  const std::optional<std::int64_t> announced = this->frames();
  if (count == 0 && announced && framesRead_ < *announced) {
    return Failure{path_ + ": ends after " + std::to_string(framesRead_) + " of " +
                   std::to_string(*announced) + " frames"};
  }
  return static_cast<std::size_t>(count);
}

Result<SoundWriter, Failure> SoundWriter::create(const std::string& path, int descriptor,
                                                 const SoundShape& shape) {
  SF_INFO info{};
  info.channels = shape.channels;
  info.samplerate = shape.sampleRateHz;
  info.format = (fitsWav(shape) ? SF_FORMAT_WAV : SF_FORMAT_RF64) | SF_FORMAT_FLOAT;
  SoundFileHandle file(sf_open_fd(descriptor, SFM_WRITE, &info, SF_FALSE));
  if (!file) return Failure{path + ": " + sf_strerror(nullptr)};
  // No chunk of peaks, which would hold the time of day; RF64 has it all the same.
  sf_command(file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
  // A file of unknown length that turns out to fit ends as plain WAV.
  sf_command(file.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
  return SoundWriter(path, std::move(file));
}

std::optional<Failure> SoundWriter::write(const float* samples, std::size_t frames) {
  const auto wanted = static_cast<sf_count_t>(frames);
  if (sf_writef_float(file_.get(), samples, wanted) == wanted) return std::nullopt;
  return Failure{path_ + ": " + sf_strerror(file_.get())};
}

std::optional<Failure> SoundWriter::finish() {
  const int error = sf_close(file_.release());
  if (error == SF_ERR_NO_ERROR) return std::nullopt;
  return Failure{path_ + ": " + sf_error_number(error)};
}

}  // namespace tolvane::ctl
