// A song whose every sample tells its frame and channel, and the comparison of a recording with it. For the
// shell tests, which play and record with programs that nobody here wrote.
//   session_sound song FILE CHANNELS SECONDS
//   session_sound compare SECONDS RECORDING SONG
//       The recording has the channels that came through Tolvane, then as many that came past it by wire.
//       Each has the samples of its wire at the same frames: at least as many of the song's channel as last
//       SECONDS.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <sndfile.h>

namespace {

constexpr int kRateHz = 48000;

struct Sound {
  int channels = 0;
  std::vector<float> samples = {};  // interleaved

  [[nodiscard]] std::size_t frames() const { return samples.size() / static_cast<std::size_t>(channels); }
  [[nodiscard]] std::vector<std::uint32_t> bitsOf(int channel) const {
    std::vector<std::uint32_t> bits;
    for (std::size_t f = 0; f < frames(); ++f) {
      bits.push_back(std::bit_cast<std::uint32_t>(
          samples[f * static_cast<std::size_t>(channels) + static_cast<std::size_t>(channel)]));
    }
    return bits;
  }
};

[[noreturn]] void fail(const std::string& message) {
  std::fprintf(stderr, "session_sound: %s\n", message.c_str());
  std::exit(1);
}

Sound read(const std::string& path) {
  SF_INFO info{};
  SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
  if (file == nullptr) fail(path + ": " + sf_strerror(nullptr));
  Sound sound{info.channels, std::vector<float>(static_cast<std::size_t>(info.frames * info.channels))};
  const auto frames = sf_readf_float(file, sound.samples.data(), info.frames);
  sound.samples.resize(static_cast<std::size_t>(frames * info.channels));
  sf_close(file);
  return sound;
}

/// A second of silence before and after the song: programs are linked one link after the other.
void writeSong(const std::string& path, int channels, int seconds) {
  Sound song{channels};
  song.samples.resize(static_cast<std::size_t>(channels) * static_cast<std::size_t>(kRateHz) *
                      static_cast<std::size_t>(seconds + 2));
  std::uint32_t code = 0;
  const std::size_t silence = static_cast<std::size_t>(channels) * kRateHz;
  for (std::size_t i = silence; i < song.samples.size() - silence; ++i) {
    song.samples[i] = static_cast<float>(++code) / static_cast<float>(1U << 24);  // exact
  }
  SF_INFO info{};
  info.channels = channels;
  info.samplerate = kRateHz;
  info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
  SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
  if (file == nullptr) fail(path + ": " + sf_strerror(nullptr));
  sf_write_float(file, song.samples.data(), static_cast<sf_count_t>(song.samples.size()));
  sf_close(file);
}

std::vector<std::uint32_t> withoutSilence(std::vector<std::uint32_t> bits) {
  std::erase(bits, 0U);
  return bits;
}

/// How many frames of the song came through as on the wire. Every frame must be equal. The programs start the
/// recorder's links one after the other, during the silence.
std::size_t expectSameFrames(const std::vector<std::uint32_t>& through,
                             const std::vector<std::uint32_t>& wire) {
  const auto first = [](const std::vector<std::uint32_t>& bits) {
    return std::find_if(bits.begin(), bits.end(), [](std::uint32_t sample) { return sample != 0; }) -
           bits.begin();
  };
  const auto shift = first(through) - first(wire);
  std::size_t equal = 0;
  std::size_t unequal = 0;
  for (std::ptrdiff_t f = 0; f < static_cast<std::ptrdiff_t>(wire.size()); ++f) {
    const auto other = f + shift;
    if (other < 0 || other >= static_cast<std::ptrdiff_t>(through.size())) continue;
    const std::uint32_t sample = wire[static_cast<std::size_t>(f)];
    if (through[static_cast<std::size_t>(other)] != sample)
      ++unequal;
    else if (sample != 0)
      ++equal;
  }
  std::printf("%zu frames of the song equal to the wire's, %zu unequal, %td frames later\n", equal, unequal,
              shift);
  if (unequal != 0) std::exit(1);
  return equal;
}

/// The samples count upwards, so a player that was late and left some out still plays an ascending part.
void expectPartOf(const std::vector<std::uint32_t>& song, const std::vector<std::uint32_t>& heard) {
  const auto found = withoutSilence(heard);
  const auto wanted = withoutSilence(song);
  if (!std::includes(wanted.begin(), wanted.end(), found.begin(), found.end())) fail("not of the song");
}

void compare(std::size_t seconds, const std::string& recordingPath, const std::string& songPath) {
  const Sound recording = read(recordingPath);
  const Sound song = read(songPath);
  const int channels = recording.channels / 2;
  for (int channel = 0; channel < channels; ++channel) {
    const auto wire = recording.bitsOf(channels + channel);
    expectPartOf(song.bitsOf(channel), wire);
    const std::size_t heard = expectSameFrames(recording.bitsOf(channel), wire);
    if (heard < seconds * kRateHz) fail("fewer than " + std::to_string(seconds) + " s of the song");
  }
}

}  // namespace

int main(int count, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + count);
  if (words.size() == 4 && words[0] == "song") {
    writeSong(words[1], std::atoi(arguments[3]),
              std::atoi(arguments[4]));  // NOLINT(cert-err34-c): a test's own
  } else if (words.size() == 4 && words[0] == "compare") {
    compare(std::stoul(words[1]), words[2], words[3]);
  } else {
    fail("usage: song FILE CHANNELS SECONDS, or compare SECONDS RECORDING SONG");
  }
  return 0;
}
