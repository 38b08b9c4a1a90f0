#include "alsa_guest/frame_checker.h"

#include <algorithm>
#include <cstring>

#include "alsa_guest/test_signal.h"

namespace tolvane::test {

FrameChecker::FrameChecker(snd_pcm_format_t format, unsigned channels)
    : format_(format), channels_(channels), frameBytes_(bytesOf(format) * channels), expected_(frameBytes_) {}

void FrameChecker::check(const std::byte* frame) {
  if (isSilent(frame)) {
    playing_ = false;
    return;
  }
  const std::size_t size = bytesOf(format_);
  const std::uint16_t number = upperBits(format_, frame + (channels_ - 1) * size);
  for (unsigned c = 0; c < channels_; ++c) {
    encode(format_, signalSample(channels_ - 1 - c, number), expected_.data() + c * size);
  }
  if (std::memcmp(frame, expected_.data(), frameBytes_) != 0) {
    ++bad_;
    playing_ = false;
    return;
  }
  ++good_;
  if (!playing_ || number != next_) {
    ++breaks_;
    run_ = 0;
  }
  longestRun_ = std::max(longestRun_, ++run_);
  playing_ = true;
  next_ = static_cast<std::uint16_t>(number + 1);
}

bool FrameChecker::isSilent(const std::byte* frame) const {
  return std::all_of(frame, frame + frameBytes_, [](std::byte byte) { return byte == std::byte{0}; });
}

}  // namespace tolvane::test
