#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "hal/alsa/card_list.h"

namespace tolvane::hal::alsa {

/// Remembers the identity of each card while the card is there. Another card of the same kind with the same
/// serial number may be plugged in meanwhile: the kernel's word alone would then give both another identity,
/// and a device that runs would be lost. Not thread-safe.
class CardIdentities {
 public:
  /// Gives each card the identity under which it was first listed, and forgets the cards that are not there.
  void keep(std::vector<Card>& cards);

 private:
  struct Kept {
    std::string place;
    std::string identity;
  };

  std::map<std::pair<int, std::string>, Kept> kept_;  // by the kernel's number and name
};

}  // namespace tolvane::hal::alsa
