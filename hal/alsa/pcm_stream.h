#pragma once

#include <cstddef>

#include "hal/alsa/channel_buffers.h"
#include "hal/alsa/hardware_space.h"
#include "hal/alsa/library.h"

namespace tolvane::hal::alsa {

/// One direction of a running card: its samples in the hardware's memory. Functions return 0 or more, or a
/// negative errno: EPIPE after an xrun, ESTRPIPE when the machine was suspended, ENODEV when the card has
/// gone. None of them allocates or waits.
class PcmStream {
 public:
  PcmStream(const Library& alsa, PcmHandle pcm) noexcept : alsa_(alsa), pcm_(std::move(pcm)) {}

  [[nodiscard]] snd_pcm_t* pcm() const noexcept { return pcm_.get(); }
  [[nodiscard]] const PcmSetup& setup() const noexcept { return setup_; }

  /// Takes the settings that were installed, and has it wake once a period, stop at an xrun and start by
  /// nobody but us. [not-io]
  int adopt(const PcmSetup& setup);

  /// The frames that can be read, or written, now. [io-thread]
  snd_pcm_sframes_t available() noexcept;

  /// Moves as many frames as the buffers hold, which must be available. [io-thread]
  int read(ChannelBuffers& to) noexcept;
  int write(ChannelBuffers& from) noexcept;

  /// Fills all that is free with silence. [io-thread]
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
