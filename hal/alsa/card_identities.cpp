#include "hal/alsa/card_identities.h"

namespace tolvane::hal::alsa {

void CardIdentities::keep(std::vector<Card>& cards) {
  decltype(kept_) present;
  for (Card& card : cards) {
    const std::pair key(card.index, card.id);
    const auto known = kept_.find(key);
    if (known != kept_.end() && known->second.place == card.place) card.identity = known->second.identity;
    present[key] = {card.place, card.identity};
  }
  kept_ = std::move(present);
}

}  // namespace tolvane::hal::alsa
