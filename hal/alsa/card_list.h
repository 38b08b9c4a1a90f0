#pragma once

#include <string>
#include <vector>

#include "hal/alsa/duplex.h"
#include "hal/alsa/library.h"

namespace tolvane::hal::alsa {

/// A sound card of the machine. A plain value.
struct Card {
  int index = 0;     // the kernel's number; another card may get it when this one has gone
  std::string id;    // the kernel's name for it: "PCH"; of cards of one kind, "USB" and "USB_1" by plug order
  std::string name;  // for people
  // The first PCM device of each direction; -1 where it has none.
  int captureDevice = -1;
  int playbackDevice = -1;
  std::string identity = {};  // lasting, if the kernel tells the card from others of its kind; else empty
  std::string place = {};     // where a USB card is plugged in; else empty

  bool operator==(const Card&) const = default;
};

/// The cards with at least one PCM device, in the kernel's order. If a card has several PCM devices in one
/// direction, only the first is used. On an ordinary interface the others are digital or monitor sockets; on
/// a professional one they are parts of the first. [not-io]
std::vector<Card> listCards(const Library& alsa);

/// libasound's names of the card's PCMs. They do not contain the card's number. [not-io]
PcmNames pcmNames(const Card& card);

}  // namespace tolvane::hal::alsa
