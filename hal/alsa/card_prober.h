#pragma once

#include "hal/alsa/card_list.h"

namespace tolvane::hal::alsa {

/// The result of probing a card.
struct Probe {
  enum class Outcome {
    known,   // `offer` is what it can do
    notNow,  // in use, or not accessible yet: `offer` has what is known
    useless  // it offers nothing that we can use
  };
  Outcome outcome = Outcome::useless;
  DuplexOffer offer;
  // By channel, as the card's driver calls them; empty if it does not.
  std::vector<std::string> inputNames = {};
  std::vector<std::string> outputNames = {};
};

/// Opens the card briefly to find out what it can do with the most channels and with settings close to
/// `settings`. [not-io]
Probe probeCard(const Library& alsa, const Card& card, const CardSettings& settings);

}  // namespace tolvane::hal::alsa
