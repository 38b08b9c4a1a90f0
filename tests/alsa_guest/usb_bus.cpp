#include "alsa_guest/usb_bus.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "alsa_guest/guest_machine.h"

namespace tolvane::test {

namespace {

namespace fs = std::filesystem;

/// The port of the machine that leads to the monitor.
std::string monitorPort() {
  for (const auto& port : fs::directory_iterator("/sys/class/virtio-ports")) {
    std::string name;
    std::ifstream(port.path() / "name") >> name;
    if (name == "monitor") return "/dev/" + port.path().filename().string();
  }
  throw std::runtime_error("the machine has no monitor");
}

}  // namespace

UsbBus::UsbBus() : port_(open(monitorPort().c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK)) {
  if (port_ < 0) throw std::runtime_error("the monitor cannot be opened");
  static bool isGreeted = false;
  if (!std::exchange(isGreeted, true)) execute(R"({"execute": "qmp_capabilities"})");
}

UsbBus::~UsbBus() {
  if (isPluggedIn_) unplug();
  close(port_);
}

/// With a serial number of its own: the emulator would make one from the port.
void UsbBus::plugIn() {
  execute(R"({"execute": "device_add", "arguments": {"driver": "usb-audio", "id": "usb", "audiodev": "usb", )"
          R"("serial": "T0001"}})");
  isPluggedIn_ = true;
}

void UsbBus::unplug() {
  execute(R"({"execute": "device_del", "arguments": {"id": "usb"}})");
  isPluggedIn_ = false;
}

/// Waits for the monitor's answer, and passes over its greeting and its events. Asks again and again instead
/// of sleeping: a machine that sleeps skips time, and the emulator answers in the other machine's time.
void UsbBus::execute(const std::string& command) {
  const std::string line = command + "\n";
  if (write(port_, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    throw std::runtime_error("the monitor does not listen");
  }
  for (std::string answer;;) {
    char c = 0;
    if (read(port_, &c, 1) != 1) continue;
    answer += c;
    if (c != '\n') continue;
    if (answer.find("\"return\"") != std::string::npos) return;
    if (answer.find("\"error\"") != std::string::npos) throw std::runtime_error(answer);
    answer.clear();
  }
}

void UsbBus::played(const std::function<void(const Frame&)>& take) {
  constexpr std::streamoff kHeaderBytes = 44;
  static const bool isMounted = runInGuest("mount -t 9p -o trans=virtio,version=9p2000.L,ro host /mnt");
  const char* const path = std::getenv("TOLVANE_USB_SOUND");
  if (path == nullptr || !isMounted) throw std::runtime_error("the sound cannot be reached");
  std::ifstream file("/run/guest/mnt" + std::string(path), std::ios::binary);
  file.seekg(kHeaderBytes);
  for (char bytes[sizeof(Frame)]; file.read(bytes, sizeof bytes);) {
    Frame frame;
    std::memcpy(&frame, bytes, sizeof frame);
    take(frame);
  }
}

}  // namespace tolvane::test
