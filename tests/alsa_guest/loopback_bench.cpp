#include "alsa_guest/loopback_bench.h"

#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

#include "alsa_guest/test_signal.h"

namespace tolvane::test {

namespace {

constexpr std::size_t kBlockFrames = 256;
constexpr unsigned kLatencyUs = 200'000;

void require(int result, const char* what) {
  if (result < 0) throw std::runtime_error(std::string(what) + ": " + snd_strerror(result));
}

}  // namespace

LoopbackBench::LoopbackBench(snd_pcm_format_t format, unsigned channels)
    : format_(format),
      channels_(channels),
      playback_(open(SND_PCM_STREAM_PLAYBACK)),
      capture_(open(SND_PCM_STREAM_CAPTURE)),
      checker_(format, channels) {
  player_ = std::thread([this] { play(); });
  recorder_ = std::thread([this] { record(); });
}

LoopbackBench::~LoopbackBench() {
  stop_ = true;
  player_.join();
  recorder_.join();
  snd_pcm_close(playback_);
  snd_pcm_close(capture_);
}

FrameChecker LoopbackBench::recorded() const {
  const std::lock_guard lock(mutex_);
  return checker_;
}

snd_pcm_t* LoopbackBench::open(snd_pcm_stream_t stream) const {
  snd_pcm_t* pcm = nullptr;
  require(snd_pcm_open(&pcm, "hw:CARD=Loopback,DEV=1", stream, 0), "open the loopback's other end");
  require(snd_pcm_set_params(pcm, format_, SND_PCM_ACCESS_RW_INTERLEAVED, channels_, 48000, 0, kLatencyUs),
          "set the loopback's other end");
  return pcm;
}

void LoopbackBench::play() {
  const std::size_t size = bytesOf(format_);
  std::vector<std::byte> block(kBlockFrames * channels_ * size);
  std::uint16_t frame = 0;
  while (!stop_) {
    for (std::size_t f = 0; f < kBlockFrames; ++f, ++frame) {
      for (unsigned c = 0; c < channels_; ++c) {
        encode(format_, signalSample(c, frame), block.data() + (f * channels_ + c) * size);
      }
    }
    const snd_pcm_sframes_t written = snd_pcm_writei(playback_, block.data(), kBlockFrames);
    if (written >= 0) continue;
    ++xruns_;
    if (snd_pcm_recover(playback_, static_cast<int>(written), 1) < 0) return;
  }
}

void LoopbackBench::record() {
  const std::size_t frameBytes = bytesOf(format_) * channels_;
  std::vector<std::byte> block(kBlockFrames * frameBytes);
  snd_pcm_start(capture_);
  while (!stop_) {
    const snd_pcm_sframes_t read = snd_pcm_readi(capture_, block.data(), kBlockFrames);
    if (read < 0) {
      ++xruns_;
      if (snd_pcm_recover(capture_, static_cast<int>(read), 1) < 0) return;
      snd_pcm_start(capture_);
      continue;
    }
    const std::lock_guard lock(mutex_);
    for (snd_pcm_sframes_t f = 0; f < read; ++f) {
      checker_.check(block.data() + static_cast<std::size_t>(f) * frameBytes);
    }
  }
}

}  // namespace tolvane::test
