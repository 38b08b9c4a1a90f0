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

/// The settings that one PCM can still take, narrowed step by step. Functions that narrow it return 0 or a
/// negative errno. After a failure of begin() or install() it may be partly narrowed. The PCM must outlive
/// it. [not-io]
class HwParams {
 public:
  /// Channels beyond this number are not used.
  static constexpr unsigned kMaxChannels = 1024;

  /// Throws std::bad_alloc.
  HwParams(const Library& alsa, snd_pcm_t* pcm);

  /// Begins with all that the hardware offers by memory-mapped access, interleaved if possible, in the first
  /// format that it has of FLOAT, S32, S24, packed S24, S16. EINVAL if it has none of these.
  int begin();

  [[nodiscard]] bool takesRate(unsigned rateHz) const;
  [[nodiscard]] unsigned nearestRate(unsigned rateHz) const;
  int setRate(unsigned rateHz);

  /// Sets exactly this number, or the most channels if it is 0.
  int setChannels(unsigned channels);
  [[nodiscard]] unsigned channels() const noexcept { return setup_.channels; }

  [[nodiscard]] unsigned minPeriodFrames() const;
  /// The longest period that fits into the longest buffer twice.
  [[nodiscard]] unsigned maxPeriodFrames() const;
  [[nodiscard]] bool takesPeriod(unsigned frames) const;
  [[nodiscard]] unsigned nearestPeriod(unsigned frames) const;

  /// Sets up the PCM. The buffer holds the possible number of periods that is nearest to `periods`. EINVAL if
  /// it is too short for two.
  int install(unsigned periodFrames, unsigned periods, PcmSetup& setup);

 private:
  using Params = std::unique_ptr<snd_pcm_hw_params_t, Release<&Library::snd_pcm_hw_params_free>>;

  [[nodiscard]] Params newParams() const;
  [[nodiscard]] Params copy() const;
  int setAccess();
  int setFormat();

  const Library& alsa_;
  snd_pcm_t* pcm_;
  Params params_;
  PcmSetup setup_;
};

}  // namespace tolvane::hal::alsa
