#include "hal/alsa/scripted_hardware.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace tolvane::test {

namespace {

using hal::alsa::Library;

/// The settings that are left.
struct Space {
  Hardware* hardware = nullptr;
  std::vector<HardwareMode> modes;
  unsigned periodFrames = 0;  // 0: any
  unsigned periods = 0;       // 0: any
};

Space& spaceOf(snd_pcm_hw_params_t* params) {
  return *reinterpret_cast<Space*>(params);
}
const Space& spaceOf(const snd_pcm_hw_params_t* params) {
  return *reinterpret_cast<const Space*>(params);
}

template <typename Value>
std::vector<HardwareMode> modesWith(const Space& space, Value HardwareMode::*member, Value value) {
  std::vector<HardwareMode> left;
  std::copy_if(space.modes.begin(), space.modes.end(), std::back_inserter(left),
               [&](const HardwareMode& mode) { return mode.*member == value; });
  return left;
}

/// Narrows the space, or leaves it as it is if nothing would be left.
template <typename Value>
int keep(Space& space, Value HardwareMode::*member, Value value) {
  std::vector<HardwareMode> left = modesWith(space, member, value);
  if (left.empty()) return -EINVAL;
  space.modes = std::move(left);
  return 0;
}

int keepNearest(Space& space, unsigned HardwareMode::*member, unsigned& value) {
  if (space.modes.empty()) return -EINVAL;
  const auto distance = [&](const HardwareMode& mode) {
    return std::abs(static_cast<int>(mode.*member) - static_cast<int>(value));
  };
  const auto nearest =
      std::min_element(space.modes.begin(), space.modes.end(),
                       [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
  value = (*nearest).*member;
  return keep(space, member, value);
}

void replaceMemory(Library& alsa) {
  alsa.snd_pcm_hw_params_malloc = [](snd_pcm_hw_params_t** params) {
    *params = reinterpret_cast<snd_pcm_hw_params_t*>(new Space);
    return 0;
  };
  alsa.snd_pcm_hw_params_free = [](snd_pcm_hw_params_t* params) { delete &spaceOf(params); };
  alsa.snd_pcm_hw_params_copy = [](snd_pcm_hw_params_t* to, const snd_pcm_hw_params_t* from) {
    spaceOf(to) = spaceOf(from);
  };
}

void replaceModes(Library& alsa) {
  alsa.snd_pcm_hw_params_any = [](snd_pcm_t* pcm, snd_pcm_hw_params_t* params) {
    auto* const hardware = reinterpret_cast<Hardware*>(pcm);
    spaceOf(params) = {hardware, hardware->modes, 0, 0};
    return 0;
  };
  alsa.snd_pcm_hw_params_set_access = [](snd_pcm_t*, snd_pcm_hw_params_t*, snd_pcm_access_t) { return 0; };
  alsa.snd_pcm_hw_params_set_format_mask = [](snd_pcm_t*, snd_pcm_hw_params_t* params,
                                              snd_pcm_format_mask_t* mask) {
    std::vector<HardwareMode>& modes = spaceOf(params).modes;
    const auto isLeftOut = [&](const HardwareMode& mode) {
      return snd_pcm_format_mask_test(mask, mode.format) == 0;
    };
    modes.erase(std::remove_if(modes.begin(), modes.end(), isLeftOut), modes.end());
    return modes.empty() ? -EINVAL : 0;
  };
  alsa.snd_pcm_hw_params_set_format = [](snd_pcm_t*, snd_pcm_hw_params_t* params, snd_pcm_format_t format) {
    return keep(spaceOf(params), &HardwareMode::format, format);
  };
  alsa.snd_pcm_hw_params_test_rate = [](snd_pcm_t*, snd_pcm_hw_params_t* params, unsigned rateHz, int) {
    return modesWith(spaceOf(params), &HardwareMode::rateHz, rateHz).empty() ? -EINVAL : 0;
  };
  alsa.snd_pcm_hw_params_set_rate = [](snd_pcm_t*, snd_pcm_hw_params_t* params, unsigned rateHz, int) {
    return keep(spaceOf(params), &HardwareMode::rateHz, rateHz);
  };
  alsa.snd_pcm_hw_params_set_rate_near = [](snd_pcm_t*, snd_pcm_hw_params_t* params, unsigned* rateHz, int*) {
    return keepNearest(spaceOf(params), &HardwareMode::rateHz, *rateHz);
  };
  alsa.snd_pcm_hw_params_set_channels = [](snd_pcm_t*, snd_pcm_hw_params_t* params, unsigned channels) {
    return keep(spaceOf(params), &HardwareMode::channels, channels);
  };
  alsa.snd_pcm_hw_params_set_channels_near = [](snd_pcm_t*, snd_pcm_hw_params_t* params, unsigned* channels) {
    return keepNearest(spaceOf(params), &HardwareMode::channels, *channels);
  };
  alsa.snd_pcm_hw_params_get_channels_max = [](const snd_pcm_hw_params_t* params, unsigned* channels) {
    *channels = 0;
    for (const HardwareMode& mode : spaceOf(params).modes) *channels = std::max(*channels, mode.channels);
    return 0;
  };
}

void replacePeriods(Library& alsa) {
  alsa.snd_pcm_hw_params_get_period_size_min = [](const snd_pcm_hw_params_t* params,
                                                  snd_pcm_uframes_t* frames, int*) {
    *frames = spaceOf(params).hardware->minPeriodFrames;
    return 0;
  };
  alsa.snd_pcm_hw_params_get_period_size_max = [](const snd_pcm_hw_params_t* params,
                                                  snd_pcm_uframes_t* frames, int*) {
    *frames = spaceOf(params).hardware->maxPeriodFrames;
    return 0;
  };
  alsa.snd_pcm_hw_params_get_buffer_size_max = [](const snd_pcm_hw_params_t* params,
                                                  snd_pcm_uframes_t* frames) {
    const Hardware& hardware = *spaceOf(params).hardware;
    *frames = snd_pcm_uframes_t{hardware.maxPeriodFrames} * hardware.maxPeriods;
    return 0;
  };
  alsa.snd_pcm_hw_params_test_period_size = [](snd_pcm_t*, snd_pcm_hw_params_t* params,
                                               snd_pcm_uframes_t frames, int) {
    const Hardware& hardware = *spaceOf(params).hardware;
    return frames >= hardware.minPeriodFrames && frames <= hardware.maxPeriodFrames ? 0 : -EINVAL;
  };
  alsa.snd_pcm_hw_params_set_period_size = [](snd_pcm_t*, snd_pcm_hw_params_t* params,
                                              snd_pcm_uframes_t frames, int) {
    spaceOf(params).periodFrames = static_cast<unsigned>(frames);
    return 0;
  };
  alsa.snd_pcm_hw_params_set_period_size_near = [](snd_pcm_t*, snd_pcm_hw_params_t* params,
                                                   snd_pcm_uframes_t* frames, int*) {
    const Hardware& hardware = *spaceOf(params).hardware;
    *frames = std::clamp<snd_pcm_uframes_t>(*frames, hardware.minPeriodFrames, hardware.maxPeriodFrames);
    spaceOf(params).periodFrames = static_cast<unsigned>(*frames);
    return 0;
  };
}

void replacePeriodCounts(Library& alsa) {
  alsa.snd_pcm_hw_params_get_periods_min = [](const snd_pcm_hw_params_t* params, unsigned* periods, int*) {
    *periods = spaceOf(params).hardware->minPeriods;
    return 0;
  };
  alsa.snd_pcm_hw_params_get_periods_max = [](const snd_pcm_hw_params_t* params, unsigned* periods, int*) {
    *periods = spaceOf(params).hardware->maxPeriods;
    return 0;
  };
  alsa.snd_pcm_hw_params_set_periods_near = [](snd_pcm_t*, snd_pcm_hw_params_t* params, unsigned* periods,
                                               int*) {
    const Hardware& hardware = *spaceOf(params).hardware;
    *periods = std::clamp(*periods, hardware.minPeriods, hardware.maxPeriods);
    spaceOf(params).periods = *periods;
    return 0;
  };
  alsa.snd_pcm_hw_params_get_buffer_size = [](const snd_pcm_hw_params_t* params, snd_pcm_uframes_t* frames) {
    *frames = snd_pcm_uframes_t{spaceOf(params).periodFrames} * spaceOf(params).periods;
    return 0;
  };
  alsa.snd_pcm_hw_params = [](snd_pcm_t* pcm, snd_pcm_hw_params_t* params) {
    auto& hardware = *reinterpret_cast<Hardware*>(pcm);
    hardware.installed = spaceOf(params).modes.front();
    hardware.installedPeriods = spaceOf(params).periods;
    return 0;
  };
}

}  // namespace

Library libraryForHardware() {
  Library alsa = *hal::alsa::library();
  replaceMemory(alsa);
  replaceModes(alsa);
  replacePeriods(alsa);
  replacePeriodCounts(alsa);
  return alsa;
}

}  // namespace tolvane::test
