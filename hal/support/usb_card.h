// What tells one USB sound card from another of the same kind.
#pragma once

#include <optional>
#include <string>

namespace tolvane::hal {

/// A sound card on USB, as the kernel describes it.
struct UsbCard {
  std::string model;      // vendor and product: "1235:8215"
  std::string serial;     // empty if it has none, or one that another card of this model has too
  std::string busPath;    // where it is plugged in: "0000:00:14.0-usb-2.1"
  std::string interface;  // its number on the USB device: "00"

  /// The same whenever the card is plugged in, in whatever order: by its serial number, or else by its place.
  [[nodiscard]] std::string identity() const {
    return "usb-" + model + (serial.empty() ? "@" + busPath : "-" + serial) + "-" + interface;
  }
};

/// The card with ALSA's number; none if it is not on USB. `devices` is the folder in which the kernel lists
/// the cards. [not-io]
[[nodiscard]] std::optional<UsbCard> usbCard(int alsaCard, const std::string& devices = "/sys/class/sound");

}  // namespace tolvane::hal
