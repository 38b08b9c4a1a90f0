// Hardware whose abilities a test lists: what libasound's space of settings is on such a card.
#pragma once

#include <vector>

#include "hal/alsa/library.h"

namespace tolvane::test {

/// One way in which the hardware can run.
struct HardwareMode {
  snd_pcm_format_t format;
  unsigned channels;
  unsigned rateHz;
};

/// The hardware of one PCM. All modes can have all periods. It must outlive its PCM.
struct Hardware {
  std::vector<HardwareMode> modes;
  unsigned minPeriodFrames = 16;
  unsigned maxPeriodFrames = 4096;
  unsigned minPeriods = 2;
  unsigned maxPeriods = 16;
  HardwareMode installed{};  // the mode that was set up last
  unsigned installedPeriods = 0;

  [[nodiscard]] snd_pcm_t* pcm() { return reinterpret_cast<snd_pcm_t*>(this); }
};

/// libasound with the functions of settings replaced: they work on the Hardware behind a PCM.
[[nodiscard]] hal::alsa::Library libraryForHardware();

}  // namespace tolvane::test
