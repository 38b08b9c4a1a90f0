#include "hal/alsa/channel_map.h"

#include <memory>

namespace tolvane::hal::alsa {

namespace {

using Maps = std::unique_ptr<snd_pcm_chmap_query_t*, Release<&Library::snd_pcm_free_chmaps>>;

std::string nameOf(const Library& alsa, unsigned position) {
  // The upper bits are flags, for example of a driver's own numbering.
  const bool isStandard = (position & ~unsigned{SND_CHMAP_POSITION_MASK}) == 0;
  if (!isStandard || position <= SND_CHMAP_NA) return {};
  const char* const name = alsa.snd_pcm_chmap_name(static_cast<snd_pcm_chmap_position>(position));
  return name != nullptr ? name : "";
}

}  // namespace

std::vector<std::string> channelNames(const Library& alsa, int card, int device, Direction direction,
                                      unsigned channels) {
  if (device < 0) return {};
  // The maps are those of a substream: there is no "any" here, and every device has a first one.
  constexpr int kSubstream = 0;
  const Maps maps(alsa.snd_pcm_query_chmaps_from_hw(card, device, kSubstream, streamOf(direction)), {&alsa});
  for (snd_pcm_chmap_query_t** map = maps.get(); map != nullptr && *map != nullptr; ++map) {
    if ((*map)->map.channels != channels) continue;
    std::vector<std::string> names;
    for (unsigned c = 0; c < channels; ++c) names.push_back(nameOf(alsa, (*map)->map.pos[c]));
    return names;
  }
  return {};
}

}  // namespace tolvane::hal::alsa
