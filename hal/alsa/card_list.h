#pragma once

#include <string>
#include <vector>

#include "hal/alsa/duplex.h"
#include "hal/alsa/library.h"

namespace tolvane::hal::alsa {

/// A sound card of the machine. A plain value.
struct Card {
  int index = 0;     // the kernel's number: another one's when this one has gone
  std::string id;    // lasting: "PCH"
  std::string name;  // for people
  // The first PCM device of each direction; -1 where it has none.
  int captureDevice = -1;
  int playbackDevice = -1;

  bool operator==(const Card&) const = default;
};

/// The cards with any PCM device, in the kernel's order. Of a card that has several PCM devices in a
/// direction the first is the card's: the others of an ordinary interface are its digital or monitor sockets,
/// and those of a professional one are parts of the first. [not-io]
std::vector<Card> listCards(const Library& alsa);

/// How libasound calls them, by the lasting identity. [not-io]
PcmNames pcmNames(const Card& card);

}  // namespace tolvane::hal::alsa
