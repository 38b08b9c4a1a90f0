#pragma once

#include "hal/alsa/library.h"
#include "hal/alsa/sample_conversion.h"

namespace tolvane::hal::alsa {

/// The settings of one open PCM.
struct PcmSetup {
  SampleFormat format = SampleFormat::s16;
  unsigned channels = 0;
  snd_pcm_uframes_t periodFrames = 0;
  snd_pcm_uframes_t bufferFrames = 0;
};

/// The lowest and the highest of a number of settings.
struct Range {
  unsigned min = 0;
  unsigned max = 0;
};

/// The settings that one PCM can still take, narrowed step by step. Functions that narrow it return 0 or a
/// negative errno. After a failure of begin() or install() it may be partly narrowed. The PCM must outlive
/// it. [not-io]
class HwParams {
 public:
  /// Channels beyond this number are not used.
  static constexpr unsigned kMaxChannels = 1024;

  /// Throws std::bad_alloc.
  HwParams(const Library& alsa, snd_pcm_t* pcm);

  /// Begins with all that the hardware offers by memory-mapped access, interleaved if possible, in the
  /// formats that we convert. EINVAL if there is nothing.
  int begin();

  [[nodiscard]] bool takesRate(unsigned rateHz) const;
  [[nodiscard]] unsigned nearestRate(unsigned rateHz) const;
  int setRate(unsigned rateHz);

  /// Sets exactly this number, or the most channels if it is 0.
  int setChannels(unsigned channels);
  [[nodiscard]] unsigned channels() const noexcept { return setup_.channels; }

  /// Sets the first format that is left of FLOAT, S32, S24, packed S24, packed S20, S16. EINVAL if none is.
  /// Called after the rate and the channels: a card may have its most precise format with fewer channels
  /// only.
  int chooseFormat();

  [[nodiscard]] unsigned minPeriodFrames() const;
  /// The longest period that fits into the longest buffer twice.
  [[nodiscard]] unsigned maxPeriodFrames() const;
  [[nodiscard]] bool takesPeriod(unsigned frames) const;
  [[nodiscard]] unsigned nearestPeriod(unsigned frames) const;
  /// How many periods of this length the buffer can hold. Both 0 if there is no such period.
  [[nodiscard]] Range periodCounts(unsigned periodFrames) const;

  /// Sets up the PCM. The buffer holds the possible number of periods that is nearest to `periods`. EINVAL if
  /// it is too short for two.
  int install(unsigned periodFrames, unsigned periods, PcmSetup& setup);

 private:
  using Params = std::unique_ptr<snd_pcm_hw_params_t, Release<&Library::snd_pcm_hw_params_free>>;

  [[nodiscard]] Params newParams() const;
  [[nodiscard]] Params copy() const;
  int setAccess();
  int keepKnownFormats();

  const Library& alsa_;
  snd_pcm_t* pcm_;
  Params params_;
  PcmSetup setup_;
};

}  // namespace tolvane::hal::alsa
