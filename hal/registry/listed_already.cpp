#include "hal/registry/listed_already.h"

#include <algorithm>

namespace tolvane::hal {

void ListedAlready::begin() {
  cards_.merge(cardsOfThisOne_);
  cardsOfThisOne_.clear();
}

bool ListedAlready::has(const DeviceInfo& device) const {
  if (uids_.contains(device.uid)) return true;
  const auto& cards = device.alsaCards;
  return !cards.empty() &&
         std::all_of(cards.begin(), cards.end(), [this](int card) { return cards_.contains(card); });
}

void ListedAlready::add(const DeviceInfo& device) {
  uids_.insert(device.uid);
  cardsOfThisOne_.insert(device.alsaCards.begin(), device.alsaCards.end());
}

}  // namespace tolvane::hal
