#pragma once

#include <cstddef>

#include "hal/alsa/channel_buffers.h"
#include "hal/alsa/hw_params.h"
#include "hal/alsa/library.h"

namespace tolvane::hal::alsa {

/// One direction of a running card: its samples in the hardware's memory. Functions return 0 or more, or a
/// negative errno: EPIPE after an xrun, ESTRPIPE if the machine was suspended, ENODEV if the card has gone.
/// None of the [io-thread] functions allocates or waits.
class PcmStream {
 public:
  PcmStream(const Library& alsa, PcmHandle pcm) noexcept : alsa_(alsa), pcm_(std::move(pcm)) {}

  [[nodiscard]] snd_pcm_t* pcm() const noexcept { return pcm_.get(); }
  [[nodiscard]] const PcmSetup& setup() const noexcept { return setup_; }

  /// Takes over the installed settings. From then on the PCM wakes us once per period, stops at an xrun and
  /// never starts by itself. [not-io]
  int adopt(const PcmSetup& setup);

  /// The frames that can be read, or written, now. [io-thread]
  snd_pcm_sframes_t available() noexcept;

  /// Both move one period, which must be available. [io-thread]
  int read(ChannelBuffers& to) noexcept;
  int write(ChannelBuffers& from) noexcept;

  /// Fills all free space with silence. [io-thread]
  int fillWithSilence() noexcept;

 private:
  template <typename Move>
  int transfer(snd_pcm_uframes_t frames, const Move& move) noexcept;
  [[nodiscard]] int failure(snd_pcm_sframes_t error) const noexcept;

  const Library& alsa_;
  PcmHandle pcm_;
  PcmSetup setup_;
};

}  // namespace tolvane::hal::alsa
