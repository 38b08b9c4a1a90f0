#include "hal/alsa/card_prober.h"

#include <cerrno>

#include "hal/alsa/card_holders.h"
#include "hal/alsa/channel_map.h"

namespace tolvane::hal::alsa {

namespace {

int inspect(const Library& alsa, const PcmNames& names, unsigned periodFrames, DuplexFormat& format) {
  std::unique_ptr<Duplex> duplex;
  const int error = Duplex::open(alsa, names, duplex);
  return error < 0 ? error : duplex->inspect({0, 0, periodFrames}, format);
}

/// Adds one direction of a busy card: what it can do if nobody uses it, else the settings that the kernel
/// reports.
void addDirection(const Library& alsa, const Card& card, Direction direction, unsigned periodFrames,
                  DuplexFormat& format) {
  const bool isCapture = direction == Direction::capture;
  const int device = isCapture ? card.captureDevice : card.playbackDevice;
  if (device < 0) return;
  PcmNames names = pcmNames(card);
  (isCapture ? names.playback : names.capture).clear();
  DuplexFormat alone;
  if (inspect(alsa, names, periodFrames, alone) < 0) {
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

Probe probeBusy(const Library& alsa, const Card& card, unsigned periodFrames) {
  Probe probe{Probe::Outcome::notNow, {}};
  addDirection(alsa, card, Direction::capture, periodFrames, probe.format);
  addDirection(alsa, card, Direction::playback, periodFrames, probe.format);
  return probe;
}

Probe probe(const Library& alsa, const Card& card, unsigned periodFrames) {
  Probe probe;
  const int error = inspect(alsa, pcmNames(card), periodFrames, probe.format);
  if (error == -EBUSY) return probeBusy(alsa, card, periodFrames);
  if (error == 0) {
    probe.outcome = Probe::Outcome::known;
  } else if (error != -EINVAL) {
    probe.outcome = Probe::Outcome::notNow;
  }
  return probe;
}

}  // namespace

Probe probeCard(const Library& alsa, const Card& card, unsigned periodFrames) {
  Probe found = probe(alsa, card, periodFrames);
  found.inputNames =
      channelNames(alsa, card.index, card.captureDevice, Direction::capture, found.format.inputChannels);
  found.outputNames =
      channelNames(alsa, card.index, card.playbackDevice, Direction::playback, found.format.outputChannels);
  return found;
}

}  // namespace tolvane::hal::alsa
