#pragma once

#include "hal/alsa/library.h"
#include "hal/alsa/sample_conversion.h"

namespace tolvane::hal::alsa {

/// What one opened PCM has been set to.
struct PcmSetup {
  SampleFormat format = SampleFormat::s16;
  unsigned channels = 0;
  snd_pcm_uframes_t periodFrames = 0;
  snd_pcm_uframes_t bufferFrames = 0;
};

/// The settings that one PCM can still take, narrowed step by step. Functions that narrow return 0 or a
/// negative errno, and leave the space as it was when they fail. The PCM must outlive it. [not-io]
class HardwareSpace {
 public:
  /// More channels than this are not used.
  static constexpr unsigned kMaxChannels = 1024;

  /// Throws std::bad_alloc.
  HardwareSpace(const Library& alsa, snd_pcm_t* pcm);

  /// All that the hardware offers by memory-mapped access, interleaved before not, in the first format that
  /// it has of FLOAT, S32, S24, packed S24, S16. EINVAL when there is nothing of it.
  int begin();

  [[nodiscard]] bool takesRate(unsigned rateHz) const;
  [[nodiscard]] unsigned nearestRate(unsigned rateHz) const;
  int setRate(unsigned rateHz);

  /// Exactly so many, or with 0 the most.
  int setChannels(unsigned channels);
  [[nodiscard]] unsigned channels() const noexcept { return setup_.channels; }

  [[nodiscard]] unsigned minPeriodFrames() const;
  /// The longest that fits the buffer twice.
  [[nodiscard]] unsigned maxPeriodFrames() const;
  [[nodiscard]] bool takesPeriod(unsigned frames) const;
  [[nodiscard]] unsigned nearestPeriod(unsigned frames) const;

  /// Sets the PCM, with a buffer of as many of these periods as can be nearest to `periods`.
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
