// The emulated machine's USB bus, on which a sound device is plugged in and unplugged.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace tolvane::test {

/// The bus, worked through the emulator's own monitor. Its one device is a sound device with two outputs at
/// 48 kHz. Each time it is plugged in, it gets another port. Throws std::runtime_error if the monitor
/// refuses.
class UsbBus {
 public:
  /// The device's maker, model, serial number and interface.
  static constexpr const char* kIdentity = "usb-46f4:0002-T0001-00";
  /// How loud the device plays.
  static constexpr double kVolume = 240.0 / 255.0;

  struct Frame {
    std::int16_t left = 0;
    std::int16_t right = 0;
    bool operator==(const Frame&) const = default;
  };

  UsbBus();
  UsbBus(const UsbBus&) = delete;
  UsbBus& operator=(const UsbBus&) = delete;
  /// Unplugs the device if it is plugged in.
  ~UsbBus();

  void plugIn();
  void unplug();

  /// Calls `take` with each frame that the unplugged device has played since it was last plugged in.
  static void played(const std::function<void(const Frame&)>& take);

 private:
  void execute(const std::string& command);

  int port_;
  bool isPluggedIn_ = false;
};

}  // namespace tolvane::test
