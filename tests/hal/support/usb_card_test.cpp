// USB sound cards as the kernel lists them, in a folder of the test's own.
#include "hal/support/usb_card.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

namespace tolvane::test {
namespace {

namespace fs = std::filesystem;

class UsbCards : public testing::Test {
 protected:
  UsbCards() { fs::create_directories(classes_); }
  ~UsbCards() override { fs::remove_all(root_); }

  /// Lists a card of this number. `ports` are those of its USB device: "1-2.1".
  void plug(int number, const std::string& bus, const std::string& ports, const std::string& serial) {
    const fs::path device = root_ / "devices/pci0000:00/0000:00:14.0" / bus / ports;
    const fs::path interface = device / (ports + ":1.0");
    fs::create_directories(interface / "sound" / ("card" + std::to_string(number)));
    std::ofstream(device / "idVendor") << "1235\n";
    std::ofstream(device / "idProduct") << "8215\n";
    if (!serial.empty()) std::ofstream(device / "serial") << serial << '\n';
    std::ofstream(interface / "bInterfaceNumber") << "00\n";
    list(number, interface);
  }
  void list(int number, const fs::path& device) const {
    const fs::path card = device / "sound" / ("card" + std::to_string(number));
    fs::create_directories(card);
    fs::create_directory_symlink(device, card / "device");
    fs::create_directory_symlink(card, classes_ / ("card" + std::to_string(number)));
  }
  void unplugAll() const {
    fs::remove_all(root_);
    fs::create_directories(classes_);
  }
  [[nodiscard]] std::string identity(int number) const {
    const auto card = hal::usbCard(number, classes_.string());
    return card ? card->identity() : "none";
  }

  const fs::path root_ = fs::temp_directory_path() / ("tolvane-usb-" + std::to_string(::getpid()));
  const fs::path classes_ = root_ / "class/sound";
};

TEST_F(UsbCards, AreKnownByTheirSerialNumbersWhereverTheyArePlugged) {
  plug(0, "usb1", "1-2", "A1");
  plug(1, "usb1", "1-3", "B2");
  EXPECT_EQ(identity(0), "usb-1235:8215-A1-00");
  EXPECT_EQ(identity(1), "usb-1235:8215-B2-00");
  unplugAll();
  plug(0, "usb1", "1-2", "B2");
  plug(1, "usb1", "1-3.4", "A1");
  EXPECT_EQ(identity(0), "usb-1235:8215-B2-00");
  EXPECT_EQ(identity(1), "usb-1235:8215-A1-00");
}

TEST_F(UsbCards, WithoutSerialNumbersAreKnownByTheirPlacesInWhateverOrder) {
  plug(0, "usb1", "1-2", "");
  plug(1, "usb1", "1-3.4", "");
  EXPECT_EQ(identity(0), "usb-1235:8215@0000:00:14.0-usb-2-00");
  EXPECT_EQ(identity(1), "usb-1235:8215@0000:00:14.0-usb-3.4-00");
  unplugAll();
  plug(0, "usb2", "2-3.4", "");  // another order of the controllers
  EXPECT_EQ(identity(0), "usb-1235:8215@0000:00:14.0-usb-3.4-00");
}

TEST_F(UsbCards, WithOneSerialNumberForAllAreKnownByTheirPlaces) {
  plug(0, "usb1", "1-2", "0001");
  plug(1, "usb1", "1-3", "0001");
  EXPECT_EQ(identity(0), "usb-1235:8215@0000:00:14.0-usb-2-00");
  EXPECT_EQ(identity(1), "usb-1235:8215@0000:00:14.0-usb-3-00");
}

TEST_F(UsbCards, AreNotThoseOfOtherBuses) {
  list(2, root_ / "devices/pci0000:00/0000:00:1b.0");
  EXPECT_EQ(identity(2), "none");
  EXPECT_EQ(identity(7), "none");
}

}  // namespace
}  // namespace tolvane::test
