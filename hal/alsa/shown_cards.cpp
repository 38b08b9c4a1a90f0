#include "hal/alsa/shown_cards.h"

#include <algorithm>

namespace tolvane::hal::alsa {

namespace {

/// One single-channel stream per channel, as the sessions deliver them.
StreamLayout monoStreams(unsigned channels) {
  return StreamLayout(channels, 1);
}

std::vector<ChannelInfo> channelsCalled(const std::vector<std::string>& names) {
  std::vector<ChannelInfo> channels;
  channels.reserve(names.size());
  for (const std::string& name : names) channels.push_back({.name = name});
  return channels;
}

DeviceInfo describe(const Card& card, const DuplexOffer& offer) {
  const DuplexFormat& format = offer.format;
  DeviceInfo info;
  info.uid = ShownCards::uidOf(card);
  info.name = card.name;
  info.transportType = kAudioDeviceTransportTypeAlsa;
  info.inputStreams = monoStreams(format.inputChannels);
  info.outputStreams = monoStreams(format.outputChannels);
  info.sampleRateHz = format.rateHz;
  info.bufferFrames = format.periodFrames;
  info.minBufferFrames = format.minPeriodFrames;
  info.maxBufferFrames = format.maxPeriodFrames;
  info.sampleRatesHz.assign(offer.ratesHz.begin(), offer.ratesHz.end());
  info.periods = format.periods;
  info.minPeriods = format.minPeriods;
  info.maxPeriods = format.maxPeriods;
  return info;
}

DeviceInfo heldCard(const Card& card) {
  DeviceInfo info;
  info.uid = ShownCards::uidOf(card);
  info.name = card.name;
  info.alsaCards = {card.index};
  info.isHeld = true;
  return info;
}

/// If several cards have the same name, appends each card's identity. This also tells them apart the next
/// time.
std::string distinctName(const Card& card, const std::vector<Card>& cards) {
  const auto namesakes =
      std::count_if(cards.begin(), cards.end(), [&](const Card& other) { return other.name == card.name; });
  return namesakes > 1 ? card.name + " (" + card.id + ")" : card.name;
}

}  // namespace

std::vector<DeviceInfo> ShownCards::show(const std::vector<Card>& cards, const Users& users) {
  forgetAllBut(cards, users.claimed);
  std::vector<DeviceInfo> devices;
  for (const Card& card : cards) {
    const std::string uid = uidOf(card);
    const bool isRunning = users.running.contains(uid);
    const bool isOurs = isRunning || users.claimed.contains(uid);
    if (!isOurs && users.servers.contains(card.index)) {
      devices.push_back(heldCard(card));
      continue;
    }
    const Known* const known = look(card, isRunning);
    if (known == nullptr) continue;
    if (!isRunning && isOurs && !known->isProbed) continue;
    const DuplexFormat& format = known->offer.format;
    if (format.inputChannels + format.outputChannels == 0) continue;
    devices.push_back(describe(card, known->offer));
    devices.back().name = distinctName(card, cards);
    devices.back().inputs = channelsCalled(known->inputNames);
    devices.back().outputs = channelsCalled(known->outputNames);
    // No card number while it is ours: it stays listed even if a sound server lists its card too.
    if (!isOurs) devices.back().alsaCards = {card.index};
  }
  return devices;
}

const ShownCards::Known* ShownCards::look(const Card& card, bool isRunning) {
  const std::string uid = uidOf(card);
  const auto known = known_.find(uid);
  if (known != known_.end() && (isRunning || !known->second.toLookAgain)) return &known->second;
  const Probe probe = probe_(card, settings(uid));
  const bool isKnown = known != known_.end() && known->second.offer.format.rateHz != 0;
  if (probe.outcome == Probe::Outcome::notNow && isKnown) return &known->second;
  // Remember useless cards too; probe cards in use again.
  Known& now = known_[uid];
  const bool isProbed = probe.outcome != Probe::Outcome::notNow;
  now = {probe.offer, !isProbed, isProbed, probe.inputNames, probe.outputNames};
  return &now;
}

void ShownCards::forgetAllBut(const std::vector<Card>& cards, const std::set<std::string>& claimed) {
  for (auto known = known_.begin(); known != known_.end();) {
    const bool there = std::any_of(cards.begin(), cards.end(),
                                   [&](const Card& card) { return uidOf(card) == known->first; });
    known = there || claimed.contains(known->first) ? std::next(known) : known_.erase(known);
  }
}

void ShownCards::lookAgain(const std::string& uid) {
  const auto known = known_.find(uid);
  if (known != known_.end()) known->second.toLookAgain = true;
}

void ShownCards::set(const std::string& uid, const CardSettings& settings) {
  wanted_[uid] = settings;
  lookAgain(uid);
}

CardSettings ShownCards::settings(const std::string& uid) const {
  const auto wanted = wanted_.find(uid);
  return wanted == wanted_.end() ? CardSettings{} : wanted->second;
}

}  // namespace tolvane::hal::alsa
