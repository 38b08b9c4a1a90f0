#include "hal/alsa/alsa_driver.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "hal/alsa/alsa_session.h"
#include "hal/alsa/card_holders.h"
#include "hal/alsa/card_identities.h"
#include "hal/alsa/hotplug_watch.h"
#include "hal/alsa/shown_cards.h"
#include "hal/driver/time_limits.h"

namespace tolvane::hal {

namespace alsa {

namespace {

using namespace std::chrono_literals;

OSStatus statusOf(int error) noexcept {
  switch (-error) {
    case 0:
      return noErr;
    case EBUSY:
    case EACCES:
    case EPERM:
      return kAudioDevicePermissionsError;
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return kAudioHardwareBadDeviceError;
    default:
      return kAudioHardwareUnspecifiedError;
  }
}

class AlsaDriver final : public Driver {
 public:
  AlsaDriver(const Library& alsa, std::function<std::set<int>()> cardsOfSoundServers)
      : alsa_(alsa),
        cardsOfSoundServers_(std::move(cardsOfSoundServers)),
        shown_([&alsa](const Card& card, const CardSettings& settings) {
          return probeCard(alsa, card, settings);
        }) {}
  AlsaDriver(const AlsaDriver&) = delete;
  AlsaDriver& operator=(const AlsaDriver&) = delete;
  ~AlsaDriver() override = default;

  [[nodiscard]] const char* name() const noexcept override { return "alsa"; }

  std::vector<DeviceInfo> devices() override {
    const std::vector<Card> cards = this->cards();
    const std::set<int> held = cards.empty() ? std::set<int>{} : cardsOfSoundServers_();
    const std::lock_guard lock(mutex_);
    claimTheLost();
    return shown_.show(cards, {held, runningUids(), claimedUids()});
  }

  StartResult start(const DeviceInfo& device, SessionClient& client) override {
    try {
      return startSession(device, client);
    } catch (const std::exception&) {  // no memory, no thread, no descriptor
      return {kAudioHardwareUnspecifiedError, nullptr};
    }
  }

  void setObserver(DeviceObserver& observer) override {
    observer_.store(&observer);
    watch_.emplace([this] { tell(); }, [this] { return isWaiting(); });
  }

  OSStatus claim(const DeviceInfo& device) override {
    const std::vector<Card> cards = this->cards();
    const Card* const card = cardOf(device.uid, cards);
    if (card == nullptr) return statusOf(-ENODEV);
    auto [outcome, reservation] = Reservation::ask(card->index, device.name);
    if (outcome == Reservation::Outcome::noBus) return kAudioHardwareUnsupportedOperationError;
    const auto isFree = [&] {
      std::unique_ptr<Duplex> duplex;
      return !cardsOfSoundServers_().contains(card->index) &&
             Duplex::open(alsa_, pcmNames(*card), duplex) != -EBUSY;
    };
    if (outcome == Reservation::Outcome::refused || !awaitReleased(outcome, isFree)) return statusOf(-EBUSY);
    {
      const std::lock_guard lock(mutex_);
      claims_[device.uid] = {card->index, std::move(reservation)};
      shown_.lookAgain(device.uid);
    }
    tell();
    return noErr;
  }

  OSStatus setBufferFrames(const DeviceInfo& device, std::uint32_t frames) override {
    const std::lock_guard lock(mutex_);
    const auto running = controlOf(device.uid);
    const OSStatus status = change(device.uid, running != nullptr,
                                   [=](CardSettings& settings) { settings.periodFrames = frames; });
    if (status == noErr && running) running->setPeriodFrames(frames);
    return status;
  }

  OSStatus setSampleRate(const DeviceInfo& device, double rateHz) override {
    return changeStopped(device.uid,
                         [=](CardSettings& settings) { settings.rateHz = static_cast<unsigned>(rateHz); });
  }

  OSStatus setPeriods(const DeviceInfo& device, std::uint32_t periods) override {
    return changeStopped(device.uid, [=](CardSettings& settings) { settings.periods = periods; });
  }

 private:
  /// A running session keeps these: its channels could be others with another rate.
  template <typename Change>
  OSStatus changeStopped(const std::string& uid, const Change& change) {
    const std::lock_guard lock(mutex_);
    if (controlOf(uid)) return kAudioHardwareUnsupportedOperationError;
    return this->change(uid, false, change);
  }

  template <typename Change>
  OSStatus change(const std::string& uid, bool isRunning, const Change& change) {
    if (!isRunning && !isReserved(uid)) {
      // A card that cannot be opened now would keep its old settings.
      std::unique_ptr<Duplex> duplex;
      const int error = open(uid, duplex);
      if (error < 0) return statusOf(error);
    }
    CardSettings settings = shown_.settings(uid);
    change(settings);
    shown_.set(uid, settings);
    return noErr;
  }

  StartResult startSession(const DeviceInfo& device, SessionClient& client) {
    const std::vector<Card> cards = this->cards();
    const Card* const card = cardOf(device.uid, cards);
    if (card == nullptr) return {statusOf(-ENODEV), nullptr};
    auto [outcome, reservation] = reserve(device, card->index);
    if (outcome == Reservation::Outcome::refused) return {kAudioDevicePermissionsError, nullptr};
    StartResult result;
    awaitReleased(outcome, [&, &reservation = reservation] {
      result = openSession(device, reservation, client);
      return result.status != kAudioDevicePermissionsError;
    });
    return result;
  }

  /// The claim's reservation if there is one, else a new one.
  Reservation::Result reserve(const DeviceInfo& device, int card) {
    Claim claim;
    {
      const std::lock_guard lock(mutex_);
      const auto known = claims_.find(device.uid);
      if (known != claims_.end()) claim = std::move(known->second);
    }
    // The card may have come back with another number. If not, its server may still open and close it for
    // what it had begun before the claim.
    if (claim.reservation && claim.card == card) {
      return {Reservation::Outcome::takenOver, std::move(claim.reservation)};
    }
    claim.reservation.reset();
    return Reservation::ask(card, device.name);
  }

  /// Tries until it succeeds, or until the card's owner, if it has agreed to release the card, has had the
  /// time to close it.
  template <typename Try>
  static bool awaitReleased(Reservation::Outcome outcome, const Try& succeeds) {
    const bool mayBeClosing = outcome == Reservation::Outcome::takenOver;
    const auto deadline = std::chrono::steady_clock::now() + (mayBeClosing ? kReleasedCardLimit : 0ms);
    while (!succeeds()) {
      if (std::chrono::steady_clock::now() >= deadline) return false;
      std::this_thread::sleep_for(20ms);
    }
    return true;
  }

  /// Takes the reservation if it succeeds.
  StartResult openSession(const DeviceInfo& device, std::unique_ptr<Reservation>& reservation,
                          SessionClient& client) {
    // Held until the session is known, so that nobody else here finds its card busy.
    const std::lock_guard lock(mutex_);
    std::unique_ptr<Duplex> duplex;
    const int error = openConfigured(device, duplex);
    if (error < 0) return {statusOf(error), nullptr};
    const DuplexFormat format = duplex->format();
    if (format.rateHz != device.sampleRateHz || format.periodFrames != device.bufferFrames) {
      client.formatChanged(format.rateHz, format.periodFrames);
    }
    auto session =
        std::make_unique<AlsaSession>(std::move(duplex), std::move(reservation), client, [this] { tell(); });
    running_[device.uid] = session->control();
    return {noErr, std::move(session)};
  }

  /// The cards that are there now.
  std::vector<Card> cards() {
    const std::lock_guard lock(cardsMutex_);
    std::vector<Card> cards = listCards(alsa_);
    identities_.keep(cards);
    return cards;
  }

  /// Null if there is no such card.
  static const Card* cardOf(const std::string& uid, const std::vector<Card>& cards) {
    const auto card =
        std::find_if(cards.begin(), cards.end(), [&](const Card& c) { return ShownCards::uidOf(c) == uid; });
    return card == cards.end() ? nullptr : &*card;
  }

  /// Returns -ENODEV if there is no such card.
  int open(const std::string& uid, std::unique_ptr<Duplex>& duplex) {
    const std::vector<Card> cards = this->cards();
    const Card* const card = cardOf(uid, cards);
    return card == nullptr ? -ENODEV : Duplex::open(alsa_, pcmNames(*card), duplex);
  }

  int openConfigured(const DeviceInfo& device, std::unique_ptr<Duplex>& duplex) {
    int error = open(device.uid, duplex);
    if (error < 0) return error;
    error =
        duplex->configure({static_cast<unsigned>(device.inputStreams.size()),
                           static_cast<unsigned>(device.outputStreams.size()), shown_.settings(device.uid)});
    // The card cannot do what its last probe found.
    if (error == -EINVAL) shown_.lookAgain(device.uid);
    return error;
  }

  /// Null when no session runs on the device.
  std::shared_ptr<SessionControl> controlOf(const std::string& uid) {
    const auto known = running_.find(uid);
    auto control = known == running_.end() ? nullptr : known->second.lock();
    return control && !control->lost() ? control : nullptr;
  }

  std::set<std::string> runningUids() {
    std::set<std::string> uids;
    for (const auto& [uid, control] : running_) {
      if (controlOf(uid)) uids.insert(uid);
    }
    return uids;
  }

  /// A sound server may open a card before us when it returns.
  void claimTheLost() {
    for (const auto& [uid, session] : running_) {
      const auto control = session.lock();
      if (control && control->lost()) claims_.try_emplace(uid);
    }
  }

  /// True between the claim and the first start.
  bool isReserved(const std::string& uid) {
    const auto claim = claims_.find(uid);
    return claim != claims_.end() && claim->second.reservation;
  }

  std::set<std::string> claimedUids() {
    std::set<std::string> uids;
    for (const auto& [uid, claim] : claims_) uids.insert(uid);
    return uids;
  }

  /// True while there is a session that has lost its card.
  bool isWaiting() {
    const std::lock_guard lock(mutex_);
    return std::any_of(running_.begin(), running_.end(), [](const auto& running) {
      const auto control = running.second.lock();
      return control && control->lost();
    });
  }

  void tell() {
    if (DeviceObserver* const observer = observer_.load()) observer->devicesChanged(*this);
  }

  /// A card that we use, whoever has it now.
  struct Claim {
    int card = -1;                                       // its number when it was reserved
    std::unique_ptr<Reservation> reservation = nullptr;  // until a session has it
  };

  const Library& alsa_;
  const std::function<std::set<int>()> cardsOfSoundServers_;
  std::atomic<DeviceObserver*> observer_{nullptr};
  std::mutex cardsMutex_;  // may be locked while mutex_ is, not the other way round
  CardIdentities identities_;
  std::mutex mutex_;
  ShownCards shown_;                                              // guarded by mutex_
  std::map<std::string, std::weak_ptr<SessionControl>> running_;  // by uid; guarded by mutex_
  std::map<std::string, Claim> claims_;                           // by uid; guarded by mutex_
  std::optional<HotplugWatch> watch_;                             // last, because its thread uses the rest
};

/// The driver on a machine without libasound.
class AbsentAlsaDriver final : public Driver {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "alsa"; }
  std::vector<DeviceInfo> devices() override { return {}; }
  StartResult start(const DeviceInfo& /*device*/, SessionClient& /*client*/) override {
    return {kAudioHardwareNotReadyError, nullptr};
  }
};

}  // namespace

}  // namespace alsa

std::unique_ptr<Driver> makeAlsaDriver() {
  const alsa::Library* alsa = alsa::library();
  if (alsa == nullptr) return std::make_unique<alsa::AbsentAlsaDriver>();
  return makeAlsaDriver(*alsa, [] { return alsa::cardsOfSoundServers(); });
}

std::unique_ptr<Driver> makeAlsaDriver(const alsa::Library& alsa,
                                       std::function<std::set<int>()> cardsOfSoundServers) {
  return std::make_unique<alsa::AlsaDriver>(alsa, std::move(cardsOfSoundServers));
}

}  // namespace tolvane::hal
