#include "hal/alsa/duplex.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <optional>

namespace tolvane::hal::alsa {

int Duplex::open(const Library& alsa, const PcmNames& names, std::unique_ptr<Duplex>& duplex) {
  std::unique_ptr<Duplex> opened(new Duplex(alsa));
  int error = opened->openStream(names.capture, Direction::capture, opened->capture_);
  if (error == 0) error = opened->openStream(names.playback, Direction::playback, opened->playback_);
  if (error == 0 && !opened->capture_ && !opened->playback_) error = -ENOENT;
  if (error == 0) duplex = std::move(opened);
  return error;
}

int Duplex::openStream(const std::string& name, Direction direction, std::unique_ptr<PcmStream>& stream) {
  if (name.empty()) return 0;
  PcmHandle pcm;
  const int error = openPcm(alsa_, name.c_str(), direction, pcm);
  if (error == 0) stream = std::make_unique<PcmStream>(alsa_, std::move(pcm));
  return error;
}

int Duplex::inspect(const DuplexWish& wish, DuplexOffer& offer) {
  std::optional<HwParams> capture;
  std::optional<HwParams> playback;
  if (capture_) capture.emplace(alsa_, capture_->pcm());
  if (playback_) playback.emplace(alsa_, playback_->pcm());
  return negotiate(capture ? &*capture : nullptr, playback ? &*playback : nullptr, wish, offer);
}

int Duplex::configure(const DuplexWish& wish) {
  if (linked_) alsa_.snd_pcm_unlink(capture_->pcm());
  linked_ = false;
  std::optional<HwParams> capture;
  std::optional<HwParams> playback;
  if (capture_) capture.emplace(alsa_, capture_->pcm());
  if (playback_) playback.emplace(alsa_, playback_->pcm());
  DuplexOffer offer;
  int error = negotiate(capture ? &*capture : nullptr, playback ? &*playback : nullptr, wish, offer);
  if (error == 0) format_ = offer.format;
  if (error == 0 && capture) error = install(*capture, *capture_);
  if (error == 0 && playback) error = install(*playback, *playback_);
  if (error < 0) return error;
  input_ = std::make_unique<ChannelBuffers>(format_.inputChannels, format_.periodFrames);
  output_ = std::make_unique<ChannelBuffers>(format_.outputChannels, format_.periodFrames);
  link();
  makePollSet();
  return prepare();
}

int Duplex::install(HwParams& space, PcmStream& stream) const {
  PcmSetup setup;
  const int error = space.install(format_.periodFrames, format_.periods, setup);
  return error < 0 ? error : stream.adopt(setup);
}

void Duplex::link() noexcept {
  if (capture_ && playback_) linked_ = alsa_.snd_pcm_link(playback_->pcm(), capture_->pcm()) == 0;
}

void Duplex::makePollSet() {
  pollSet_.clear();
  const auto add = [this](const std::unique_ptr<PcmStream>& stream) {
    const int wanted = stream ? std::max(0, alsa_.snd_pcm_poll_descriptors_count(stream->pcm())) : 0;
    const std::size_t first = pollSet_.size();
    pollSet_.resize(first + static_cast<std::size_t>(wanted) + 1);
    if (!stream) return std::size_t{0};
    const auto room = static_cast<unsigned>(wanted);
    return static_cast<std::size_t>(
        std::max(0, alsa_.snd_pcm_poll_descriptors(stream->pcm(), &pollSet_[first], room)));
  };
  captureFds_ = add(capture_);
  add(playback_);
}

int Duplex::prepare() noexcept {
  for (const PcmStream* const stream : {capture_.get(), playback_.get()}) {
    if (stream == nullptr) continue;
    const int error = alsa_.snd_pcm_prepare(stream->pcm());
    if (error < 0) return error;
  }
  return playback_ ? playback_->fillWithSilence() : 0;
}

int Duplex::start() noexcept {
  // If the directions are not linked, start the inputs first: the outputs have a whole buffer of silence to
  // play.
  int error = 0;
  if (capture_ && !linked_) error = alsa_.snd_pcm_start(capture_->pcm());
  if (playback_ && error == 0) error = alsa_.snd_pcm_start(playback_->pcm());
  return error;
}

void Duplex::stop() noexcept {
  if (playback_) alsa_.snd_pcm_drop(playback_->pcm());
  if (capture_) alsa_.snd_pcm_drop(capture_->pcm());
}

int Duplex::resume() noexcept {
  for (PcmStream* const stream : {capture_.get(), playback_.get()}) {
    if (stream == nullptr || alsa_.snd_pcm_state(stream->pcm()) != SND_PCM_STATE_SUSPENDED) continue;
    if (alsa_.snd_pcm_resume(stream->pcm()) == -EAGAIN) return -EAGAIN;
  }
  return 0;
}

int Duplex::wait(int wakeFd, int timeoutMs) noexcept {
  bool woken = false;
  const pollfd wake{wakeFd, POLLIN, 0};
  pollSet_[captureFds_] = wake;
  pollSet_.back() = wake;
  int error = 0;
  if (capture_) error = waitFor(*capture_, 0, captureFds_, timeoutMs, woken);
  if (error == 0 && !woken && playback_) {
    const std::size_t first = captureFds_ + 1;
    error = waitFor(*playback_, first, pollSet_.size() - first - 1, timeoutMs, woken);
  }
  if (woken) return 0;
  return error < 0 ? error : periodsReady();
}

/// Polls `count` descriptors from `first` on, and wakeFd after them.
int Duplex::waitFor(PcmStream& stream, std::size_t first, std::size_t count, int timeoutMs,
                    bool& woken) noexcept {
  for (;;) {
    const int ready = poll(&pollSet_[first], static_cast<nfds_t>(count + 1), timeoutMs);
    if (ready == 0) return -ETIMEDOUT;
    if (ready < 0 && errno != EINTR) return -errno;
    if (ready < 0) continue;
    woken = pollSet_[first + count].revents != 0;
    if (woken) return 0;
    unsigned short events = 0;
    const int error = alsa_.snd_pcm_poll_descriptors_revents(stream.pcm(), &pollSet_[first],
                                                             static_cast<unsigned>(count), &events);
    if (error < 0) return error;
    // After an error the stream itself says which it was. If it does not, it has stopped all the same.
    if ((events & (POLLERR | POLLNVAL | POLLHUP)) != 0) {
      const snd_pcm_sframes_t frames = stream.available();
      return frames < 0 ? static_cast<int>(frames) : -EIO;
    }
    if (events != 0) return 0;
  }
}

int Duplex::periodsReady() noexcept {
  auto frames = std::numeric_limits<snd_pcm_sframes_t>::max();
  for (PcmStream* const stream : {capture_.get(), playback_.get()}) {
    if (stream == nullptr) continue;
    const snd_pcm_sframes_t available = stream->available();
    if (available < 0) return static_cast<int>(available);
    frames = std::min(frames, available);
  }
  return static_cast<int>(frames / static_cast<snd_pcm_sframes_t>(format_.periodFrames));
}

}  // namespace tolvane::hal::alsa
