#include "hal/alsa/card_list.h"

#include <memory>
#include <optional>

#include "hal/support/usb_card.h"

namespace tolvane::hal::alsa {

namespace {

using CardInfo = std::unique_ptr<snd_ctl_card_info_t, Release<&Library::snd_ctl_card_info_free>>;
using PcmInfo = std::unique_ptr<snd_pcm_info_t, Release<&Library::snd_pcm_info_free>>;

int firstDevice(const Library& alsa, snd_ctl_t* control, Direction direction) {
  snd_pcm_info_t* allocated = nullptr;
  if (alsa.snd_pcm_info_malloc(&allocated) < 0) return -1;
  const PcmInfo info(allocated, {&alsa});
  for (int device = -1; alsa.snd_ctl_pcm_next_device(control, &device) == 0 && device >= 0;) {
    alsa.snd_pcm_info_set_device(info.get(), static_cast<unsigned>(device));
    alsa.snd_pcm_info_set_stream(info.get(), streamOf(direction));
    if (alsa.snd_ctl_pcm_info(control, info.get()) == 0) return device;
  }
  return -1;
}

std::optional<Card> describe(const Library& alsa, int index) {
  snd_ctl_t* opened = nullptr;
  const std::string name = "hw:" + std::to_string(index);
  if (alsa.snd_ctl_open(&opened, name.c_str(), SND_CTL_NONBLOCK) < 0) return std::nullopt;
  const ControlHandle control(opened, {&alsa});
  snd_ctl_card_info_t* allocated = nullptr;
  if (alsa.snd_ctl_card_info_malloc(&allocated) < 0) return std::nullopt;
  const CardInfo info(allocated, {&alsa});
  if (alsa.snd_ctl_card_info(control.get(), info.get()) < 0) return std::nullopt;
  const std::optional<UsbCard> usb = usbCard(index);
  return Card{index,
              alsa.snd_ctl_card_info_get_id(info.get()),
              alsa.snd_ctl_card_info_get_name(info.get()),
              firstDevice(alsa, control.get(), Direction::capture),
              firstDevice(alsa, control.get(), Direction::playback),
              usb ? usb->identity() : std::string(),
              usb ? usb->busPath : std::string()};
}

std::string pcmName(const Card& card, int device) {
  return device < 0 ? std::string() : "hw:CARD=" + card.id + ",DEV=" + std::to_string(device);
}

}  // namespace

std::vector<Card> listCards(const Library& alsa) {
  std::vector<Card> cards;
  for (int index = -1; alsa.snd_card_next(&index) == 0 && index >= 0;) {
    std::optional<Card> card = describe(alsa, index);
    if (card && (card->captureDevice >= 0 || card->playbackDevice >= 0)) cards.push_back(std::move(*card));
  }
  return cards;
}

PcmNames pcmNames(const Card& card) {
  return {pcmName(card, card.captureDevice), pcmName(card, card.playbackDevice)};
}

}  // namespace tolvane::hal::alsa
