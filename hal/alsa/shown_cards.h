#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "hal/alsa/card_prober.h"
#include "hal/driver/device_info.h"

namespace tolvane::hal::alsa {

/// Makes devices from the machine's cards and remembers what each card can do. Probing a card opens it, which
/// takes time on some cards, clicks on others and is impossible while the card is in use. Not thread-safe.
/// [not-io]
class ShownCards {
 public:
  using Prober = std::function<Probe(const Card&, const CardSettings&)>;

  explicit ShownCards(Prober probe) : probe_(std::move(probe)) {}

  /// The devices, in the order of `cards`. Leaves out cards that a sound server uses (`held`, by number),
  /// unless one of our sessions runs on them (`running`, by uid). Probes each new card. A card in use keeps
  /// what is known of it; a card that was in use from the start is shown with its user's settings.
  [[nodiscard]] std::vector<DeviceInfo> show(const std::vector<Card>& cards, const std::set<int>& held,
                                             const std::set<std::string>& running);

  /// Makes show() probe the device again, once no session of ours runs on it.
  void lookAgain(const std::string& uid);
  /// The settings to ask the device for; set() makes show() probe it again.
  void set(const std::string& uid, const CardSettings& settings);
  [[nodiscard]] CardSettings settings(const std::string& uid) const;

  [[nodiscard]] static std::string uidOf(const Card& card) {
    return "alsa:" + (card.identity.empty() ? card.id : card.identity);
  }

 private:
  struct Known {
    DuplexOffer offer;
    bool toLookAgain = false;
    std::vector<std::string> inputNames = {};
    std::vector<std::string> outputNames = {};
  };

  const Known* look(const Card& card, bool isRunning);
  void forgetAllBut(const std::vector<Card>& cards);

  const Prober probe_;
  std::map<std::string, Known> known_;          // by uid; of cards that are there
  std::map<std::string, CardSettings> wanted_;  // by uid
};

}  // namespace tolvane::hal::alsa
