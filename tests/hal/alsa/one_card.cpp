#include "hal/alsa/one_card.h"

#include <cerrno>

namespace tolvane::test {

namespace {

using hal::alsa::Library;
using hal::alsa::library;

const OneCard* machine = nullptr;

/// An unplugged card's PCMs say so, too.
Library oneCard() {
  Library alsa = *library();
  alsa.snd_card_next = [](int* index) {
    *index = machine->isThere && *index < 0 ? OneCard::kNumber : -1;
    return 0;
  };
  alsa.snd_ctl_open = [](snd_ctl_t** control, const char* /*name*/, int /*mode*/) {
    *control = nullptr;
    return 0;
  };
  alsa.snd_ctl_card_info = [](snd_ctl_t* /*control*/, snd_ctl_card_info_t* /*info*/) { return 0; };
  alsa.snd_ctl_card_info_get_id = [](const snd_ctl_card_info_t* /*info*/) { return "Card"; };
  alsa.snd_ctl_card_info_get_name = [](const snd_ctl_card_info_t* /*info*/) { return "A card"; };
  alsa.snd_ctl_pcm_next_device = [](snd_ctl_t* /*control*/, int* device) {
    *device = *device < 0 ? 0 : -1;
    return 0;
  };
  alsa.snd_ctl_pcm_info = [](snd_ctl_t* /*control*/, snd_pcm_info_t* /*info*/) { return 0; };
  alsa.snd_pcm_open = [](snd_pcm_t** pcm, const char* /*name*/, snd_pcm_stream_t stream, int mode) {
    return machine->isHeld ? -EBUSY : library()->snd_pcm_open(pcm, "null", stream, mode);
  };
  alsa.snd_pcm_avail_update = [](snd_pcm_t* pcm) {
    return machine->isThere ? library()->snd_pcm_avail_update(pcm) : snd_pcm_sframes_t{-ENODEV};
  };
  return alsa;
}

}  // namespace

OneCard::OneCard()
    : alsa_((machine = this, oneCard())),
      driver_(
          hal::makeAlsaDriver(alsa_, [this] { return isServers ? std::set{kNumber} : std::set<int>{}; })) {}

}  // namespace tolvane::test
