#include "hal/support/usb_card.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

namespace tolvane::hal {

namespace {

namespace fs = std::filesystem;

/// The first line of a small file; empty if there is none.
std::string lineIn(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

/// A USB device's folder is called like its bus and ports, "1-2.1", below one called "usb1" in that of its
/// controller. The bus's number depends on the order of the controllers, so it is no part of the place.
std::string busPathOf(const fs::path& usbDevice) {
  fs::path hub = usbDevice.parent_path();
  while (!hub.filename().string().starts_with("usb") && hub.has_relative_path()) hub = hub.parent_path();
  const std::string ports = usbDevice.filename().string();
  return hub.parent_path().filename().string() + "-usb-" + ports.substr(ports.find('-') + 1);
}

std::optional<UsbCard> describe(const fs::path& card) {
  std::error_code error;
  const fs::path interface = fs::canonical(card / "device", error);
  if (error) return std::nullopt;
  const fs::path device = interface.parent_path();
  const std::string vendor = lineIn(device / "idVendor");
  if (vendor.empty()) return std::nullopt;
  return UsbCard{vendor + ":" + lineIn(device / "idProduct"), lineIn(device / "serial"), busPathOf(device),
                 lineIn(interface / "bInterfaceNumber")};
}

std::vector<UsbCard> allUsbCards(const std::string& devices) {
  std::vector<UsbCard> cards;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(devices, error)) {
    if (!entry.path().filename().string().starts_with("card")) continue;
    if (auto card = describe(entry.path())) cards.push_back(*std::move(card));
  }
  return cards;
}

}  // namespace

std::optional<UsbCard> usbCard(int alsaCard, const std::string& devices) {
  auto card = describe(devices + "/card" + std::to_string(alsaCard));
  if (!card) return std::nullopt;
  for (const UsbCard& other : allUsbCards(devices)) {
    const bool isTwin = other.model == card->model && other.serial == card->serial;
    // Some makers give every card the same number.
    if (isTwin && other.busPath != card->busPath) card->serial.clear();
  }
  return card;
}

}  // namespace tolvane::hal
