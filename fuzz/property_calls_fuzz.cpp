// Calls the HAL's property functions with any object, address, qualifier and size, on the virtual device, an
// aggregate and a device that cannot be changed. Each call must return a documented status and stay within
// the client's buffer.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bytes.h"
#include "hal/core_audio.h"
#include "hal/pipewire/aggregate_list.h"
#include "hal/registry/properties.h"
#include "hal/registry/registry.h"
#include "hal/surface/io_thread_scheduling.h"
#include "hal/virtual/virtual_driver.h"
#include "require.h"

namespace tolvane::fuzz {
namespace {

/// A card as the driver lists it.
hal::pipewire::ListedDevice card(const char* name, std::size_t inputs, std::size_t outputs) {
  hal::pipewire::ListedDevice device;
  device.info.uid = std::string("pipewire:") + name;
  device.info.name = name;
  device.info.inputStreams.assign(inputs, 1);
  device.info.outputStreams.assign(outputs, 1);
  device.inputs.resize(inputs);
  device.outputs.resize(outputs);
  device.isCard = device.isComplete = true;
  device.info.sampleRatesHz = {44100.0, 48000.0};
  device.info.periods = device.info.minPeriods = 2;
  device.info.maxPeriods = 16;
  device.info.inputs.assign(inputs, {"Kick", "node", "port"});
  return device;
}

constexpr std::string_view kHeldUid = "alsa:three";

/// A card that a sound server has: the second device is the server's way to it.
hal::DeviceInfo heldCard() {
  hal::DeviceInfo held;
  held.uid = kHeldUid;
  held.name = "three";
  held.alsaCards = {2};
  held.isHeld = true;
  return held;
}

std::vector<hal::DeviceInfo> cardsAndAggregate() {
  const std::vector<hal::pipewire::ListedDevice> cards = {card("one", 2, 8), card("t\xF6o", 0, 1)};
  std::vector<hal::DeviceInfo> all;
  for (const auto& device : cards) all.push_back(device.info);
  all[1].alsaCards = {2};
  all.push_back(heldCard());
  const auto notRunning = [](const std::string&) { return nullptr; };
  for (auto& aggregate : hal::pipewire::aggregatesOf(cards, {}, notRunning)) {
    aggregate.info.minBufferFrames = 32;
    aggregate.info.maxBufferFrames = 2048;
    all.push_back(aggregate.info);
  }
  return all;
}

class ListingDriver final : public hal::Driver {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "fuzz"; }
  std::vector<hal::DeviceInfo> devices() override { return cardsAndAggregate(); }
  hal::StartResult start(const hal::DeviceInfo& /*device*/, hal::SessionClient& /*client*/) override {
    return {kAudioHardwareUnspecifiedError, nullptr};
  }
  OSStatus setBufferFrames(const hal::DeviceInfo& /*device*/, std::uint32_t frames) override {
    require(frames >= 32 && frames <= 2048);
    return noErr;
  }
  OSStatus setSampleRate(const hal::DeviceInfo& device, double rateHz) override {
    const auto& rates = device.sampleRatesHz;
    require(std::find(rates.begin(), rates.end(), rateHz) != rates.end());
    return noErr;
  }
  OSStatus setPeriods(const hal::DeviceInfo& device, std::uint32_t periods) override {
    require(periods >= device.minPeriods && periods <= device.maxPeriods);
    return noErr;
  }
  OSStatus claim(const hal::DeviceInfo& card) override {
    require(card == heldCard());
    return noErr;
  }
};

std::vector<AudioObjectID> listDevices() {
  std::vector<std::unique_ptr<hal::Driver>> drivers;
  drivers.push_back(std::make_unique<ListingDriver>());
  drivers.push_back(hal::makeVirtualDriver());
  hal::Registry::shared().useDrivers(std::move(drivers));
  return hal::Registry::shared().listDevices().devices;
}

/// The selectors of all properties.
const std::vector<AudioObjectPropertySelector>& selectors() {
  static const std::vector<AudioObjectPropertySelector> all = [] {
    std::vector<AudioObjectPropertySelector> made;
    for (const auto& property : hal::systemProperties()) made.push_back(property.selector);
    for (const auto& property : hal::deviceProperties()) made.push_back(property.selector);
    return made;
  }();
  return all;
}

constexpr std::array<AudioObjectPropertyScope, 3> kScopes = {
    kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyScopeInput, kAudioObjectPropertyScopeOutput};
constexpr std::array<OSStatus, 9> kStatuses = {noErr,
                                               kAudioHardwareIllegalOperationError,
                                               kAudioHardwareBadObjectError,
                                               kAudioHardwareUnknownPropertyError,
                                               kAudioHardwareBadPropertySizeError,
                                               kAudioHardwareUnsupportedOperationError,
                                               kAudioHardwareNotRunningError,
                                               kAudioHardwareNotReadyError,
                                               kAudioHardwareBadDeviceError};

OSStatus checked(OSStatus status) {
  require(std::find(kStatuses.begin(), kStatuses.end(), status) != kStatuses.end());
  return status;
}

OSStatus listener(AudioObjectID /*object*/, UInt32 /*count*/, const AudioObjectPropertyAddress* /*addresses*/,
                  void* /*clientData*/) {
  return noErr;
}

constexpr std::array<AudioObjectPropertySelector, 9> kTexts = {
    kAudioObjectPropertyName,      kAudioDevicePropertyDeviceUID,     kAudioObjectPropertyElementName,
    kTolvanePropertySilentServers, kTolvanePropertyProblems,          kTolvaneDevicePropertyProAudioCommand,
    kTolvaneDevicePropertyCardUID, kTolvaneDevicePropertyChannelNode, kTolvaneDevicePropertyChannelPort};

bool isText(AudioObjectPropertySelector selector) {
  return std::find(kTexts.begin(), kTexts.end(), selector) != kTexts.end();
}

/// One call of the HAL.
class Call {
 public:
  Call(Bytes& bytes, const std::vector<AudioObjectID>& devices) : bytes_(bytes) {
    const std::size_t choice = bytes.below(devices.size() + 3);
    object_ = choice < devices.size()    ? devices[choice]
              : choice == devices.size() ? bytes.number<AudioObjectID>()
                                         : AudioObjectID{kAudioObjectSystemObject};
    const std::size_t selector = bytes.below(selectors().size() + 1);
    address_.mSelector = selector < selectors().size() ? selectors()[selector] : bytes.number<UInt32>();
    const std::size_t scope = bytes.below(8);
    address_.mScope = scope < kScopes.size() ? kScopes[scope]
                      : scope == 7           ? bytes.number<UInt32>()
                                             : kScopes[0];
    const std::size_t element = bytes.below(8);
    address_.mElement = element == 0 ? bytes.number<UInt32>() : element < 3 ? bytes.byte() : 0U;
    at_ = bytes.below(16) == 0 ? nullptr : &address_;
    qualifierBytes_ = bytes.below(8) == 0 ? bytes.number<UInt32>() : 0;
  }

  void run() {
    switch (bytes_.below(6)) {
      case 0:
        return size();
      case 1:
        return set();
      case 2:
        checked(AudioObjectAddPropertyListener(object_, at_, listener, nullptr));
        return;
      case 3:
        checked(AudioObjectRemovePropertyListener(object_, at_, listener, nullptr));
        return;
      default:
        return get();
    }
  }

 private:
  void size() {
    UInt32 size = 0;
    const OSStatus status =
        checked(AudioObjectGetPropertyDataSize(object_, at_, qualifierBytes_, nullptr, &size));
    if (status != noErr) return;
    std::vector<std::byte> room(size);
    read(room.data(), size);
  }

  void get() {
    const UInt32 given = bytes_.coin() ? UInt32{bytes_.byte()} : bytes_.number<std::uint16_t>() % 2048U;
    const std::size_t shift = bytes_.below(8);
    // Ends where the value may end, and begins at any address.
    const std::unique_ptr<std::byte[]> room(new std::byte[shift + given]);
    read(room.get() + shift, given);
  }

  void read(std::byte* room, UInt32 given) {
    UInt32 size = given;
    std::byte none{};
    std::byte* const data = given == 0 ? &none : room;
    const OSStatus status =
        checked(AudioObjectGetPropertyData(object_, at_, qualifierBytes_, nullptr, &size, data));
    require(size <= given || status != noErr);
    if (status != noErr || !isText(address_.mSelector)) return;
    CFStringRef text = nullptr;
    require(size == sizeof text);
    std::memcpy(&text, data, sizeof text);
    require(text != nullptr);
    CFRelease(text);
  }

  template <class Value>
  static std::vector<char> bytesOf(const Value& value) {
    std::vector<char> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
  }

  void set() {
    std::vector<char> value;
    if (bytes_.coin()) {
      value.resize(bytes_.below(32));
      for (char& byte : value) byte = static_cast<char>(bytes_.byte());
    } else {
      // What some property can be set to: a number of frames or periods, a rate, or a card's uid.
      const auto number = bytes_.number<std::uint16_t>();
      const Float64 rateHz = number;
      const UInt32 count = number;
      const std::size_t kind = bytes_.below(3);
      value = kind == 0   ? bytesOf(count)
              : kind == 1 ? bytesOf(rateHz)
                          : std::vector(kHeldUid.begin(), kHeldUid.end());
    }
    // Of exactly that size, so that reading on is seen.
    const std::unique_ptr<char[]> data(new char[value.size()]);
    std::copy(value.begin(), value.end(), data.get());
    const auto given = static_cast<UInt32>(value.size());
    checked(AudioObjectSetPropertyData(object_, at_, qualifierBytes_, nullptr, given, data.get()));
  }

  Bytes& bytes_;
  AudioObjectID object_ = kAudioObjectUnknown;
  AudioObjectPropertyAddress address_{};
  const AudioObjectPropertyAddress* at_ = nullptr;
  UInt32 qualifierBytes_ = 0;
};

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const std::vector<AudioObjectID> devices = tolvane::fuzz::listDevices();
  tolvane::fuzz::require(devices.size() == 4);
  tolvane::fuzz::Bytes input(bytes, size);
  for (int calls = 0; calls < 16 && !input.isEmpty(); ++calls) tolvane::fuzz::Call(input, devices).run();
  return 0;
}
