// The agreement of desktops on who uses a sound card: org.freedesktop.ReserveDevice1 on the session bus.
#pragma once

#include <memory>
#include <string>
#include <thread>

#include "hal/alsa/reservation_answers.h"
#include "hal/support/dbus.h"

namespace tolvane::hal::alsa {

/// A card that is ours on the user's session bus. Whoever asks for it meanwhile is refused: we only reserve a
/// card to run on it. Everything but giveBack() is [not-io].
class Reservation {
 public:
  enum class Outcome {
    reserved,   // nobody had it
    takenOver,  // its owner has agreed to release it; the owner may still need a moment to close the card
    refused,    // its owner keeps it, or does not answer
    noBus       // there is no session bus or it does not answer, so nobody can be asked
  };
  struct Result {
    Outcome outcome = Outcome::noBus;
    std::unique_ptr<Reservation> reservation;
  };

  /// Asks for the card with this number of the kernel; asks its owner, if there is one, to release it.
  /// `shownName` is shown to the user of the next program that asks. Waits up to kReservationLimit
  /// (hal/driver/time_limits.h). Throws std::system_error.
  static Result ask(int card, const std::string& shownName);

  Reservation(const Reservation&) = delete;
  Reservation& operator=(const Reservation&) = delete;
  /// Gives the card back. Waits up to kGiveBackLimit until the bus knows.
  ~Reservation();

  /// Begins to give the card back and does not wait. [any-thread]
  void giveBack() noexcept;

 private:
  Reservation(BusConnection bus, ReservedCard card);

  void serve();
  void answerAll();
  void releaseName();

  BusConnection bus_;
  const ReservedCard card_;
  int endFd_;
  std::thread thread_;  // uses the connection until it ends
};

}  // namespace tolvane::hal::alsa
