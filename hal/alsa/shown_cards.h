#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "hal/alsa/card_prober.h"
#include "hal/driver/device_info.h"

namespace tolvane::hal::alsa {

/// Makes devices of the machine's cards, and remembers what each can do: looking opens it, which takes time
/// on some cards, clicks on others and cannot be done while it is in use. Not thread-safe. [not-io]
class ShownCards {
 public:
  using Prober = std::function<Probe(const Card&, unsigned periodFrames)>;

  explicit ShownCards(Prober probe) : probe_(std::move(probe)) {}

  /// The devices, in the cards' order: of `cards` those that no sound server has (`held`, by number), and
  /// those that a session of ours runs on (`running`, by identity) in any case. A card is looked at when it
  /// is new, and a card in use keeps what was known of it; one that is in use from the first on is shown with
  /// what its user has set it to.
  [[nodiscard]] std::vector<DeviceInfo> show(const std::vector<Card>& cards, const std::set<int>& held,
                                             const std::set<std::string>& running);

  /// Looks at the device again the next time that it can be.
  void lookAgain(const std::string& uid);
  /// The period that is asked of the device from now on.
  void setPeriodFrames(const std::string& uid, unsigned frames);
  [[nodiscard]] unsigned periodFrames(const std::string& uid) const;

  [[nodiscard]] static std::string uidOf(const Card& card) { return "alsa:" + card.id; }

 private:
  struct Known {
    DuplexFormat format;
    bool toLookAgain = false;
  };

  const Known* look(const Card& card, bool isRunning);
  void forgetAllBut(const std::vector<Card>& cards);

  const Prober probe_;
  std::map<std::string, Known> known_;                  // by uid; of cards that are there
  std::map<std::string, unsigned> wantedPeriodFrames_;  // by uid
};

}  // namespace tolvane::hal::alsa
