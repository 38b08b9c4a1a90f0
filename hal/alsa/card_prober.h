#pragma once

#include "hal/alsa/card_list.h"

namespace tolvane::hal::alsa {

/// What a look at a card has found.
struct Probe {
  enum class Outcome {
    known,   // `format` is what it can do
    notNow,  // somebody has it, or we may not have it yet: `format` is as much as can be told
    useless  // nothing that we can use
  };
  Outcome outcome = Outcome::useless;
  DuplexFormat format;
};

/// Opens the card for a moment to see what it can do with the most channels and a period near to
/// `periodFrames`. [not-io]
Probe probeCard(const Library& alsa, const Card& card, unsigned periodFrames);

}  // namespace tolvane::hal::alsa
