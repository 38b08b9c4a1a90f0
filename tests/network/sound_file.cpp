#include "network/sound_file.h"

#include <memory>
#include <stdexcept>

#include <sndfile.h>

namespace tolvane::test {

namespace {

using File = std::unique_ptr<SNDFILE, decltype(&sf_close)>;

File openSound(const std::string& path, int mode, SF_INFO& info) {
  File file(sf_open(path.c_str(), mode, &info), &sf_close);
  if (!file) throw std::runtime_error(path + ": " + sf_strerror(nullptr));
  return file;
}

}  // namespace

Sound readSound(const std::string& path) {
  SF_INFO info{};
  const File file = openSound(path, SFM_READ, info);
  Sound sound{static_cast<unsigned>(info.channels), {}};
  constexpr sf_count_t kFramesAtOnce = 65536;
  std::vector<float> block(static_cast<std::size_t>(kFramesAtOnce) * sound.channels);
  while (const sf_count_t frames = sf_readf_float(file.get(), block.data(), kFramesAtOnce)) {
    sound.samples.insert(sound.samples.end(), block.begin(), block.begin() + frames * info.channels);
  }
  return sound;
}

}  // namespace tolvane::test
