#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <alsa/asoundlib.h>

namespace tolvane::test {

/// Checks recorded frames of the test signal, whose channels come back in reverse order. Each frame must be
/// silent or, bit for bit, one frame of the signal.
class FrameChecker {
 public:
  FrameChecker(snd_pcm_format_t format, unsigned channels);

  void check(const std::byte* frame);

  /// The number of frames of the signal, and of frames that are neither signal nor silence.
  [[nodiscard]] std::uint64_t good() const { return good_; }
  [[nodiscard]] std::uint64_t bad() const { return bad_; }
  /// The longest run of consecutive frames of the signal.
  [[nodiscard]] std::uint64_t longestRun() const { return longestRun_; }
  /// How often the signal began, or did not continue with its next frame.
  [[nodiscard]] std::uint64_t breaks() const { return breaks_; }

 private:
  [[nodiscard]] bool isSilent(const std::byte* frame) const;

  const snd_pcm_format_t format_;
  const unsigned channels_;
  const std::size_t frameBytes_;
  std::vector<std::byte> expected_;
  bool playing_ = false;
  std::uint16_t next_ = 0;
  std::uint64_t good_ = 0;
  std::uint64_t bad_ = 0;
  std::uint64_t breaks_ = 0;
  std::uint64_t run_ = 0;
  std::uint64_t longestRun_ = 0;
};

}  // namespace tolvane::test
