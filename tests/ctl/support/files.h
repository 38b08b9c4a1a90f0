// Temporary folders, patches and sound files for tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <sndfile.h>

#include "core/patch/patch_connection.h"

namespace tolvane::test {

/// A folder that the destructor removes with its content.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  /// The sorted names of its content, including hidden files.
  [[nodiscard]] std::vector<std::string> names() const;

 private:
  std::string path_;
};

void writeText(const std::string& path, const std::string& text);
[[nodiscard]] std::string readBytes(const std::string& path);

/// Writes the routes as JSON, without the program's own encoder.
void writePatch(const std::string& path, const std::vector<PatchConnection>& routes);
[[nodiscard]] std::string patchText(const std::vector<PatchConnection>& routes);

/// The content of a sound file. `samples` are interleaved.
struct Sound {
  int channels = 1;
  int sampleRateHz = 48000;
  int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
  std::vector<float> samples;

  [[nodiscard]] std::size_t frames() const { return samples.size() / static_cast<std::size_t>(channels); }
};

void writeSound(const std::string& path, const Sound& sound);
/// Reads a sound file. If it cannot be read, fails the test and returns an empty Sound.
[[nodiscard]] Sound readSound(const std::string& path);

/// The bits of each sample, for comparing results bit by bit.
[[nodiscard]] std::vector<std::uint32_t> bitsOf(const std::vector<float>& samples);

}  // namespace tolvane::test
