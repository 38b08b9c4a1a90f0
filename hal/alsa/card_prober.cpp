#include "hal/alsa/card_prober.h"

#include <cerrno>

#include "hal/alsa/card_holders.h"
#include "hal/alsa/channel_map.h"

namespace tolvane::hal::alsa {

namespace {

int inspect(const Library& alsa, const PcmNames& names, const CardSettings& settings, DuplexOffer& offer) {
  std::unique_ptr<Duplex> duplex;
  const int error = Duplex::open(alsa, names, duplex);
  return error < 0 ? error : duplex->inspect({0, 0, settings}, offer);
}

/// Adds one direction of a busy card: what it can do if nobody uses it, else the settings that the kernel
/// reports.
void addDirection(const Library& alsa, const Card& card, Direction direction, const CardSettings& settings,
                  DuplexFormat& format) {
  const bool isCapture = direction == Direction::capture;
  const int device = isCapture ? card.captureDevice : card.playbackDevice;
  if (device < 0) return;
  PcmNames names = pcmNames(card);
  (isCapture ? names.playback : names.capture).clear();
  DuplexOffer offer;
  DuplexFormat& alone = offer.format;
  if (inspect(alsa, names, settings, offer) < 0) {
    const std::string pcm = "pcm" + std::to_string(device) + (isCapture ? "c" : "p");
    const PcmInUse inUse = pcmInUse(card.index, pcm).value_or(PcmInUse{});
    (isCapture ? alone.inputChannels : alone.outputChannels) = inUse.channels;
    alone.rateHz = inUse.rateHz;
    alone.periodFrames = inUse.periodFrames;
  }
  format.inputChannels += alone.inputChannels;
  format.outputChannels += alone.outputChannels;
  if (format.rateHz == 0) format.rateHz = alone.rateHz;
  if (format.periodFrames == 0) format.periodFrames = alone.periodFrames;
}

Probe probeBusy(const Library& alsa, const Card& card, const CardSettings& settings) {
  Probe probe{Probe::Outcome::notNow, {}};
  addDirection(alsa, card, Direction::capture, settings, probe.offer.format);
  addDirection(alsa, card, Direction::playback, settings, probe.offer.format);
  return probe;
}

Probe probe(const Library& alsa, const Card& card, const CardSettings& settings) {
  Probe probe;
  const int error = inspect(alsa, pcmNames(card), settings, probe.offer);
  if (error == -EBUSY) return probeBusy(alsa, card, settings);
  if (error == 0) {
    probe.outcome = Probe::Outcome::known;
  } else if (error != -EINVAL) {
    probe.outcome = Probe::Outcome::notNow;
  }
  return probe;
}

}  // namespace

Probe probeCard(const Library& alsa, const Card& card, const CardSettings& settings) {
  Probe found = probe(alsa, card, settings);
  const DuplexFormat& format = found.offer.format;
  found.inputNames =
      channelNames(alsa, card.index, card.captureDevice, Direction::capture, format.inputChannels);
  found.outputNames =
      channelNames(alsa, card.index, card.playbackDevice, Direction::playback, format.outputChannels);
  return found;
}

}  // namespace tolvane::hal::alsa
