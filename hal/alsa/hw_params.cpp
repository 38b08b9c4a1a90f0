#include "hal/alsa/hw_params.h"

#include <algorithm>
#include <cerrno>
#include <new>

namespace tolvane::hal::alsa {

HwParams::HwParams(const Library& alsa, snd_pcm_t* pcm) : alsa_(alsa), pcm_(pcm), params_(newParams()) {}

HwParams::Params HwParams::newParams() const {
  snd_pcm_hw_params_t* params = nullptr;
  if (alsa_.snd_pcm_hw_params_malloc(&params) < 0) throw std::bad_alloc();
  return {params, {&alsa_}};
}

HwParams::Params HwParams::copy() const {
  Params params = newParams();
  alsa_.snd_pcm_hw_params_copy(params.get(), params_.get());
  return params;
}

int HwParams::begin() {
  const int error = alsa_.snd_pcm_hw_params_any(pcm_, params_.get());
  if (error < 0) return error;
  const int accessError = setAccess();
  return accessError < 0 ? accessError : setFormat();
}

int HwParams::setAccess() {
  int error = -EINVAL;
  for (const auto access : {SND_PCM_ACCESS_MMAP_INTERLEAVED, SND_PCM_ACCESS_MMAP_NONINTERLEAVED}) {
    error = alsa_.snd_pcm_hw_params_set_access(pcm_, params_.get(), access);
    if (error == 0) break;
  }
  return error;
}

int HwParams::setFormat() {
  struct Known {
    snd_pcm_format_t theirs;
    SampleFormat ours;
  };
  // The most precise formats come first. S24 in four bytes comes before packed S24, which some controllers
  // fake.
  static constexpr Known kFormats[] = {{SND_PCM_FORMAT_FLOAT_LE, SampleFormat::float32},
                                       {SND_PCM_FORMAT_S32_LE, SampleFormat::s32},
                                       {SND_PCM_FORMAT_S24_LE, SampleFormat::s24},
                                       {SND_PCM_FORMAT_S24_3LE, SampleFormat::s24Packed},
                                       {SND_PCM_FORMAT_S16_LE, SampleFormat::s16}};
  int error = -EINVAL;
  for (const Known& known : kFormats) {
    error = alsa_.snd_pcm_hw_params_set_format(pcm_, params_.get(), known.theirs);
    setup_.format = known.ours;
    if (error == 0) break;
  }
  return error;
}

bool HwParams::takesRate(unsigned rateHz) const {
  return alsa_.snd_pcm_hw_params_test_rate(pcm_, params_.get(), rateHz, 0) == 0;
}

unsigned HwParams::nearestRate(unsigned rateHz) const {
  const Params trial = copy();
  int side = 0;
  return alsa_.snd_pcm_hw_params_set_rate_near(pcm_, trial.get(), &rateHz, &side) < 0 ? 0 : rateHz;
}

int HwParams::setRate(unsigned rateHz) {
  return alsa_.snd_pcm_hw_params_set_rate(pcm_, params_.get(), rateHz, 0);
}

int HwParams::setChannels(unsigned channels) {
  if (channels == 0) {
    int error = alsa_.snd_pcm_hw_params_get_channels_max(params_.get(), &channels);
    if (error < 0) return error;
    channels = std::min(channels, kMaxChannels);
    error = alsa_.snd_pcm_hw_params_set_channels_near(pcm_, params_.get(), &channels);
    if (error < 0) return error;
  }
  const int error = alsa_.snd_pcm_hw_params_set_channels(pcm_, params_.get(), channels);
  if (error == 0) setup_.channels = channels;
  return error;
}

unsigned HwParams::minPeriodFrames() const {
  snd_pcm_uframes_t frames = 0;
  int side = 0;
  alsa_.snd_pcm_hw_params_get_period_size_min(params_.get(), &frames, &side);
  return static_cast<unsigned>(frames);
}

unsigned HwParams::maxPeriodFrames() const {
  snd_pcm_uframes_t period = 0;
  snd_pcm_uframes_t buffer = 0;
  int side = 0;
  alsa_.snd_pcm_hw_params_get_period_size_max(params_.get(), &period, &side);
  alsa_.snd_pcm_hw_params_get_buffer_size_max(params_.get(), &buffer);
  return static_cast<unsigned>(std::min(period, buffer / 2));
}

bool HwParams::takesPeriod(unsigned frames) const {
  return alsa_.snd_pcm_hw_params_test_period_size(pcm_, params_.get(), frames, 0) == 0;
}

unsigned HwParams::nearestPeriod(unsigned frames) const {
  const Params trial = copy();
  snd_pcm_uframes_t nearest = frames;
  int side = 0;
  const int error = alsa_.snd_pcm_hw_params_set_period_size_near(pcm_, trial.get(), &nearest, &side);
  return error < 0 ? 0 : static_cast<unsigned>(nearest);
}

int HwParams::install(unsigned periodFrames, unsigned periods, PcmSetup& setup) {
  int side = 0;
  int error = alsa_.snd_pcm_hw_params_set_period_size(pcm_, params_.get(), periodFrames, side);
  if (error < 0) return error;
  error = alsa_.snd_pcm_hw_params_set_periods_near(pcm_, params_.get(), &periods, &side);
  if (error < 0) return error;
  error = alsa_.snd_pcm_hw_params(pcm_, params_.get());
  if (error < 0) return error;
  setup_.periodFrames = periodFrames;
  alsa_.snd_pcm_hw_params_get_buffer_size(params_.get(), &setup_.bufferFrames);
  setup = setup_;
  return setup_.bufferFrames >= 2 * setup_.periodFrames ? 0 : -EINVAL;
}

}  // namespace tolvane::hal::alsa
