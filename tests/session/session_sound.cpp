// A song whose every sample tells its frame and channel, and the comparison of a recording with it. For the
// shell tests, which play and record with programs that nobody here wrote.
//   session_sound song FILE CHANNELS SECONDS
//   session_sound compare RECORDING SONG          every channel of the recording has the song's channel
//   session_sound compare --wire SECONDS RECORDING SONG
//       both channels have the same samples at the same frames: at least as many of the song as last SECONDS
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

/// Every sample of the song, in order and bit for bit. The player may pause in between.
void expectWhole(const std::vector<std::uint32_t>& heard, const std::vector<std::uint32_t>& song,
                 const std::string& what) {
  const auto found = withoutSilence(heard);
  const auto wanted = withoutSilence(song);
  const auto differ = std::mismatch(found.begin(), found.end(), wanted.begin(), wanted.end());
  if (differ.first == found.end() && differ.second == wanted.end()) return;
  fail(what + ": " + std::to_string(found.size()) + " samples instead of " + std::to_string(wanted.size()) +
       "; the first " + std::to_string(differ.first - found.begin()) + " are equal");
}

/// The programs start the recorder's links one after the other, during the silence.
void expectSameFrames(const std::vector<std::uint32_t>& through, const std::vector<std::uint32_t>& wire) {
  const auto first = [](const std::vector<std::uint32_t>& bits) {
    return std::find_if(bits.begin(), bits.end(), [](std::uint32_t sample) { return sample != 0; }) -
           bits.begin();
  };
  const auto shift = first(through) - first(wire);
  std::size_t unequal = 0;
  for (std::ptrdiff_t f = 0; f < static_cast<std::ptrdiff_t>(wire.size()); ++f) {
    const auto other = f + shift;
    const bool isThere = other >= 0 && other < static_cast<std::ptrdiff_t>(through.size());
    if (isThere && through[static_cast<std::size_t>(other)] != wire[static_cast<std::size_t>(f)]) ++unequal;
  }
  std::printf("%zu frames compared with the wire, %zu unequal, %td frames later\n", wire.size(), unequal,
              shift);
  if (unequal != 0) std::exit(1);
}

/// The samples count upwards, so a player that was late and left some out still plays an ascending part.
std::size_t expectPartOf(const std::vector<std::uint32_t>& song, const std::vector<std::uint32_t>& heard) {
  const auto found = withoutSilence(heard);
  const auto wanted = withoutSilence(song);
  if (!std::includes(wanted.begin(), wanted.end(), found.begin(), found.end())) fail("not of the song");
  return found.size();
}

void compareWithWire(std::size_t seconds, const std::string& recordingPath, const std::string& songPath) {
  const Sound recording = read(recordingPath);
  const std::size_t heard = expectPartOf(read(songPath).bitsOf(0), recording.bitsOf(1));
  expectSameFrames(recording.bitsOf(0), recording.bitsOf(1));
  std::printf("%zu samples of the song equal\n", heard);
  if (heard < seconds * kRateHz) fail("fewer than " + std::to_string(seconds) + " s of the song");
}

void compare(const std::string& recordingPath, const std::string& songPath) {
  const Sound recording = read(recordingPath);
  const Sound song = read(songPath);
  for (int channel = 0; channel < recording.channels; ++channel) {
    expectWhole(recording.bitsOf(channel), song.bitsOf(channel), "channel " + std::to_string(channel + 1));
  }
  std::printf("%zu samples equal on each of %d channels\n", withoutSilence(song.bitsOf(0)).size(),
              recording.channels);
}

}  // namespace

int main(int count, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + count);
  if (words.size() == 4 && words[0] == "song") {
    writeSong(words[1], std::atoi(arguments[3]),
              std::atoi(arguments[4]));  // NOLINT(cert-err34-c): a test's own
  } else if (words.size() == 3 && words[0] == "compare") {
    compare(words[1], words[2]);
  } else if (words.size() == 5 && words[0] == "compare" && words[1] == "--wire") {
    compareWithWire(std::stoul(words[2]), words[3], words[4]);
  } else {
    fail("usage: song FILE CHANNELS SECONDS, or compare [--wire SECONDS] RECORDING SONG");
  }
  return 0;
}
