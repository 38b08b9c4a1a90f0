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

  /// Who uses which card.
  struct Users {
    std::set<int> servers = {};          // numbers of the cards that a sound server uses
    std::set<std::string> running = {};  // uids of the cards that one of our sessions runs on
    std::set<std::string> claimed = {};  // uids of the cards that we use, whoever has them now
  };

  /// The devices, in the order of `cards`. A card that a sound server uses is held, unless it is claimed or
  /// one of our sessions runs on it. Probes each new card that is not held. A card in use keeps what is known
  /// of it; a card that was in use from the start is shown with its user's settings. A claimed card that has
  /// been away keeps what is known of it, too; one of which nothing is known is shown once it is free.
  [[nodiscard]] std::vector<DeviceInfo> show(const std::vector<Card>& cards, const Users& users);

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
    bool isProbed = false;  // the offer is the card's own, not its user's settings
    std::vector<std::string> inputNames = {};
    std::vector<std::string> outputNames = {};
  };

  const Known* look(const Card& card, bool isRunning);
  void forgetAllBut(const std::vector<Card>& cards, const std::set<std::string>& claimed);

  const Prober probe_;
  std::map<std::string, Known> known_;          // by uid; of cards that are there or claimed
  std::map<std::string, CardSettings> wanted_;  // by uid
};

}  // namespace tolvane::hal::alsa
