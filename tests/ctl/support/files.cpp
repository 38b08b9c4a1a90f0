#include "ctl/support/files.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>
#include <unistd.h>

namespace tolvane::test {

TemporaryFolder::TemporaryFolder() {
  // In memory if possible: rendering waits for the disk, and the tests render about 1000 times.
  const std::filesystem::path memory = "/dev/shm";
  const bool usable = ::access(memory.c_str(), W_OK | X_OK) == 0;
  std::string name = (usable ? memory : std::filesystem::temp_directory_path()) / "tolvanectl-test-XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp");
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryFolder::names() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_))
    names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

void writeText(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

std::string readBytes(const std::string& path) {
  const std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

std::string patchText(const std::vector<PatchConnection>& routes) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(9);  // identifies every float
  text << "[";
  for (std::size_t i = 0; i < routes.size(); ++i) {
    text << (i == 0 ? "" : ",") << "{\"inputChannel\":" << routes[i].inputChannel
         << ",\"outputChannel\":" << routes[i].outputChannel << ",\"gain\":" << routes[i].gain
         << ",\"active\":" << (routes[i].active ? "true" : "false") << "}";
  }
  text << "]";
  return text.str();
}

void writePatch(const std::string& path, const std::vector<PatchConnection>& routes) {
  writeText(path, patchText(routes));
}

void writeSound(const std::string& path, const Sound& sound) {
  SF_INFO info{};
  info.channels = sound.channels;
  info.samplerate = sound.sampleRateHz;
  info.format = sound.format;
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  if (file == nullptr) throw std::runtime_error(path + ": " + sf_strerror(nullptr));
  const int subtype = sound.format & SF_FORMAT_SUBMASK;
  const auto frames = static_cast<sf_count_t>(sound.frames());
  if (subtype == SF_FORMAT_FLOAT || subtype == SF_FORMAT_DOUBLE) {
    sf_writef_float(file, sound.samples.data(), frames);
  } else {
    // As integers: the library would scale floats by a power of two minus one.
    std::vector<int> integers;
    for (const float sample : sound.samples) integers.push_back(static_cast<int>(std::ldexp(sample, 31)));
    sf_writef_int(file, integers.data(), frames);
  }
  if (sf_close(file) != 0) throw std::runtime_error("cannot write " + path);
}

Sound readSound(const std::string& path) {
  SF_INFO info{};
  SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
  if (file == nullptr) {
    ADD_FAILURE() << path << ": " << sf_strerror(nullptr);
    return {};
  }
  Sound sound{info.channels, info.samplerate, info.format, {}};
  sound.samples.resize(static_cast<std::size_t>(info.frames * info.channels));
  EXPECT_EQ(sf_readf_float(file, sound.samples.data(), info.frames), info.frames);
  sf_close(file);
  return sound;
}

std::vector<std::uint32_t> bitsOf(const std::vector<float>& samples) {
  std::vector<std::uint32_t> bits;
  bits.reserve(samples.size());
  for (const float sample : samples) bits.push_back(std::bit_cast<std::uint32_t>(sample));
  return bits;
}

}  // namespace tolvane::test
