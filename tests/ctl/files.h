// Files that tests make and read: a folder of their own, patches, sound files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <sndfile.h>

#include "core/patch_connection.h"

namespace tolvane::test {

/// A folder that is gone, with all in it, when the object is.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  /// Names in it, hidden ones included, in order.
  [[nodiscard]] std::vector<std::string> names() const;

 private:
  std::string path_;
};

void writeText(const std::string& path, const std::string& text);
[[nodiscard]] std::string readBytes(const std::string& path);

/// Writes the routes as JSON, by a way that is not the program's own.
void writePatch(const std::string& path, const std::vector<PatchConnection>& routes);
[[nodiscard]] std::string patchText(const std::vector<PatchConnection>& routes);

/// A whole sound file: `samples` interleaved.
struct Sound {
  int channels = 1;
  int sampleRateHz = 48000;
  int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
  std::vector<float> samples;

  [[nodiscard]] std::size_t frames() const { return samples.size() / static_cast<std::size_t>(channels); }
};

void writeSound(const std::string& path, const Sound& sound);
/// Fails the test, and gives an empty one, when it cannot be read.
[[nodiscard]] Sound readSound(const std::string& path);

/// The bits of each sample: two results are the same only when their bits are.
[[nodiscard]] std::vector<std::uint32_t> bitsOf(const std::vector<float>& samples);

}  // namespace tolvane::test
