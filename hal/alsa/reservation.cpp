#include "hal/alsa/reservation.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "hal/driver/time_limits.h"
#include "hal/support/thread.h"

namespace tolvane::hal::alsa {

namespace {

/// The questions to the bus and to a card's owner, with one deadline for all answers.
class Asking {
 public:
  Asking(BusConnection& bus, const ReservedCard& card, std::chrono::steady_clock::time_point deadline)
      : bus_(bus), dbus_(bus.dbus()), card_(card), deadline_(deadline) {}

  Reservation::Outcome ask() {
    using Outcome = Reservation::Outcome;
    // Not to be replaced: while we run on the card, we keep it.
    const auto isFree = requestName(DBUS_NAME_FLAG_DO_NOT_QUEUE);
    if (!isFree) return Outcome::noBus;
    if (*isFree) return Outcome::reserved;
    // An owner that gave no answer may have left instead.
    const bool agrees = ownerAgrees();
    const dbus_uint32_t replacing = agrees ? DBUS_NAME_FLAG_REPLACE_EXISTING : 0;
    if (!requestName(DBUS_NAME_FLAG_DO_NOT_QUEUE | replacing).value_or(false)) return Outcome::refused;
    return agrees ? Outcome::takenOver : Outcome::reserved;
  }

 private:
  [[nodiscard]] std::chrono::milliseconds left() const {
    using std::chrono::milliseconds;
    const auto time = std::chrono::ceil<milliseconds>(deadline_ - std::chrono::steady_clock::now());
    return std::max(time, milliseconds(1));
  }

  /// None if the bus does not answer.
  std::optional<bool> requestName(dbus_uint32_t flags) {
    const BusMessage call =
        bus_.newCall(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "RequestName");
    const char* name = card_.busName.c_str();
    if (!call || dbus_.dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_UINT32, &flags,
                                                DBUS_TYPE_INVALID) == 0) {
      return std::nullopt;
    }
    const BusMessage answer = bus_.ask(call, left());
    dbus_uint32_t result = 0;
    if (!answer || dbus_.dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_UINT32, &result,
                                               DBUS_TYPE_INVALID) == 0) {
      return std::nullopt;
    }
    return result == DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER || result == DBUS_REQUEST_NAME_REPLY_ALREADY_OWNER;
  }

  bool ownerAgrees() {
    const BusMessage call =
        bus_.newCall(card_.busName.c_str(), card_.path.c_str(), kReservationInterface, "RequestRelease");
    dbus_int32_t priority = kReservationPriority;
    if (!call ||
        dbus_.dbus_message_append_args(call.get(), DBUS_TYPE_INT32, &priority, DBUS_TYPE_INVALID) == 0) {
      return false;
    }
    dbus_.dbus_message_set_auto_start(call.get(), 0);
    const BusMessage answer = bus_.ask(call, left());
    if (!answer) return false;
    dbus_bool_t agrees = 0;
    return dbus_.dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_BOOLEAN, &agrees,
                                       DBUS_TYPE_INVALID) != 0 &&
           agrees != 0;
  }

  BusConnection& bus_;
  const DBus& dbus_;
  const ReservedCard& card_;
  const std::chrono::steady_clock::time_point deadline_;
};

}  // namespace

Reservation::Result Reservation::ask(int card, const std::string& shownName) {
  const DBus* const library = dbus();
  if (library == nullptr) return {};
  const auto deadline = std::chrono::steady_clock::now() + kReservationLimit;
  BusConnection bus = connectToSessionBus(*library, kReservationLimit);
  if (!bus) return {};
  ReservedCard wanted = reservedCard(card, shownName);
  const Outcome outcome = Asking(bus, wanted, deadline).ask();
  if (outcome == Outcome::refused || outcome == Outcome::noBus) return {outcome, nullptr};
  return {outcome, std::unique_ptr<Reservation>(new Reservation(std::move(bus), std::move(wanted)))};
}

Reservation::Reservation(BusConnection bus, ReservedCard card)
    : bus_(std::move(bus)), card_(std::move(card)), endFd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (endFd_ < 0) throw std::system_error(errno, std::generic_category());
  const SignalsBlocked blocked;
  try {
    thread_ = std::thread([this] { serve(); });
  } catch (...) {
    close(endFd_);
    throw;
  }
}

Reservation::~Reservation() {
  giveBack();
  thread_.join();
  close(endFd_);
}

void Reservation::giveBack() noexcept {
  eventfd_write(endFd_, 1);
}

/// Answers whoever asks for the card, until it is given back.
void Reservation::serve() {
  pthread_setname_np(pthread_self(), "tolvane-reserve");
  int busFd = bus_.descriptor();
  for (;;) {
    // Before the wait: calls may have come together with an answer that we were waiting for.
    answerAll();
    // poll() ignores a descriptor of -1.
    pollfd sources[] = {{endFd_, POLLIN, 0}, {busFd, POLLIN, 0}};
    if (poll(sources, std::size(sources), -1) < 0 && errno != EINTR) break;
    if (sources[0].revents != 0) break;
    if (sources[1].revents != 0 && !bus_.transfer()) busFd = -1;  // the bus has gone, and asks no more
  }
  releaseName();
}

void Reservation::answerAll() {
  while (BusMessage message = bus_.next()) {
    for (; message; message = bus_.next()) {
      if (const BusMessage answer = answerAbout(card_, bus_.dbus(), message.get())) bus_.send(answer);
    }
    // It writes the answers, and may read more calls: poll() would not wake for these.
    bus_.transfer();
  }
}

void Reservation::releaseName() {
  const BusMessage call = bus_.newCall(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "ReleaseName");
  const char* name = card_.busName.c_str();
  if (call &&
      bus_.dbus().dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID) != 0) {
    bus_.ask(call, kGiveBackLimit);
  }
}

}  // namespace tolvane::hal::alsa
