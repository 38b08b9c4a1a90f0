#include "hal/alsa/pcm_stream.h"

#include <cerrno>

namespace tolvane::hal::alsa {

namespace {

std::byte* firstSample(const snd_pcm_channel_area_t& area, snd_pcm_uframes_t offset) noexcept {
  return static_cast<std::byte*>(area.addr) + (area.first + offset * area.step) / 8;
}

int setWaking(const Library& alsa, snd_pcm_t* pcm, snd_pcm_sw_params_t* params, const PcmSetup& setup) {
  int error = alsa.snd_pcm_sw_params_current(pcm, params);
  if (error < 0) return error;
  snd_pcm_uframes_t boundary = 0;
  alsa.snd_pcm_sw_params_get_boundary(params, &boundary);
  error = alsa.snd_pcm_sw_params_set_start_threshold(pcm, params, boundary);
  if (error < 0) return error;
  error = alsa.snd_pcm_sw_params_set_stop_threshold(pcm, params, setup.bufferFrames);
  if (error < 0) return error;
  error = alsa.snd_pcm_sw_params_set_avail_min(pcm, params, setup.periodFrames);
  return error < 0 ? error : alsa.snd_pcm_sw_params(pcm, params);
}

}  // namespace

int PcmStream::adopt(const PcmSetup& setup) {
  setup_ = setup;
  snd_pcm_sw_params_t* params = nullptr;
  if (alsa_.snd_pcm_sw_params_malloc(&params) < 0) return -ENOMEM;
  const int error = setWaking(alsa_, pcm_.get(), params, setup);
  alsa_.snd_pcm_sw_params_free(params);
  return error;
}

snd_pcm_sframes_t PcmStream::available() noexcept {
  const snd_pcm_sframes_t frames = alsa_.snd_pcm_avail_update(pcm_.get());
  return frames < 0 ? failure(frames) : frames;
}

/// Moves frames in pieces that are contiguous in the ring.
template <typename Move>
int PcmStream::transfer(snd_pcm_uframes_t frames, const Move& move) noexcept {
  for (snd_pcm_uframes_t done = 0; done < frames;) {
    const snd_pcm_channel_area_t* areas = nullptr;
    snd_pcm_uframes_t offset = 0;
    snd_pcm_uframes_t piece = frames - done;
    const int error = alsa_.snd_pcm_mmap_begin(pcm_.get(), &areas, &offset, &piece);
    if (error < 0) return failure(error);
    if (piece == 0) return -EPIPE;  // fewer than reported as available: the ring has moved meanwhile
    move(areas, offset, done, piece);
    const snd_pcm_sframes_t committed = alsa_.snd_pcm_mmap_commit(pcm_.get(), offset, piece);
    if (committed < 0) return failure(committed);
    if (static_cast<snd_pcm_uframes_t>(committed) != piece) return -EPIPE;
    done += piece;
  }
  return 0;
}

int PcmStream::read(ChannelBuffers& to) noexcept {
  return transfer(setup_.periodFrames, [&](const snd_pcm_channel_area_t* areas, snd_pcm_uframes_t offset,
                                           snd_pcm_uframes_t done, snd_pcm_uframes_t piece) {
    for (std::size_t c = 0; c < to.channels(); ++c) {
      toFloat(setup_.format, firstSample(areas[c], offset), areas[c].step / 8, to.channel(c) + done, piece);
    }
  });
}

int PcmStream::write(ChannelBuffers& from) noexcept {
  return transfer(setup_.periodFrames, [&](const snd_pcm_channel_area_t* areas, snd_pcm_uframes_t offset,
                                           snd_pcm_uframes_t done, snd_pcm_uframes_t piece) {
    for (std::size_t c = 0; c < from.channels(); ++c) {
      fromFloat(setup_.format, from.channel(c) + done, firstSample(areas[c], offset), areas[c].step / 8,
                piece);
    }
  });
}

int PcmStream::fillWithSilence() noexcept {
  const snd_pcm_sframes_t free = available();
  if (free < 0) return static_cast<int>(free);
  return transfer(static_cast<snd_pcm_uframes_t>(free),
                  [&](const snd_pcm_channel_area_t* areas, snd_pcm_uframes_t offset, snd_pcm_uframes_t,
                      snd_pcm_uframes_t piece) {
                    for (unsigned c = 0; c < setup_.channels; ++c) {
                      writeSilence(setup_.format, firstSample(areas[c], offset), areas[c].step / 8, piece);
                    }
                  });
}

/// A card that has gone may return any error, but its state says that it has gone.
int PcmStream::failure(snd_pcm_sframes_t error) const noexcept {
  return alsa_.snd_pcm_state(pcm_.get()) == SND_PCM_STATE_DISCONNECTED ? -ENODEV : static_cast<int>(error);
}

}  // namespace tolvane::hal::alsa
