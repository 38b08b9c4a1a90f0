#include "hal/alsa/hw_params.h"

#include <algorithm>
#include <cerrno>
#include <new>

namespace tolvane::hal::alsa {

namespace {

struct KnownFormat {
  snd_pcm_format_t theirs;
  SampleFormat ours;
};

// The most precise formats come first. S24 in four bytes comes before packed S24, which some controllers
// fake.
constexpr KnownFormat kFormats[] = {
    {SND_PCM_FORMAT_FLOAT_LE, SampleFormat::float32},  {SND_PCM_FORMAT_S32_LE, SampleFormat::s32},
    {SND_PCM_FORMAT_S24_LE, SampleFormat::s24},        {SND_PCM_FORMAT_S24_3LE, SampleFormat::s24Packed},
    {SND_PCM_FORMAT_S20_3LE, SampleFormat::s20Packed}, {SND_PCM_FORMAT_S16_LE, SampleFormat::s16}};

}  // namespace

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
  return accessError < 0 ? accessError : keepKnownFormats();
}

int HwParams::setAccess() {
  int error = -EINVAL;
  for (const auto access : {SND_PCM_ACCESS_MMAP_INTERLEAVED, SND_PCM_ACCESS_MMAP_NONINTERLEAVED}) {
    error = alsa_.snd_pcm_hw_params_set_access(pcm_, params_.get(), access);
    if (error == 0) break;
  }
  return error;
}

int HwParams::keepKnownFormats() {
  snd_pcm_format_mask_t* allocated = nullptr;
  if (alsa_.snd_pcm_format_mask_malloc(&allocated) < 0) return -ENOMEM;
  const std::unique_ptr<snd_pcm_format_mask_t, Release<&Library::snd_pcm_format_mask_free>> mask(allocated,
                                                                                                 {&alsa_});
  alsa_.snd_pcm_format_mask_none(mask.get());
  for (const KnownFormat& known : kFormats) alsa_.snd_pcm_format_mask_set(mask.get(), known.theirs);
  return alsa_.snd_pcm_hw_params_set_format_mask(pcm_, params_.get(), mask.get());
}

int HwParams::chooseFormat() {
  int error = -EINVAL;
  for (const KnownFormat& known : kFormats) {
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

Range HwParams::periodCounts(unsigned periodFrames) const {
  const Params trial = copy();
  int side = 0;
  Range range;
  if (alsa_.snd_pcm_hw_params_set_period_size(pcm_, trial.get(), periodFrames, side) < 0) return range;
  // Each bound of a space is exact or exclusive: the side says which.
  if (alsa_.snd_pcm_hw_params_get_periods_min(trial.get(), &range.min, &side) < 0) return {};
  if (side > 0) ++range.min;
  if (alsa_.snd_pcm_hw_params_get_periods_max(trial.get(), &range.max, &side) < 0) return {};
  return range;
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
