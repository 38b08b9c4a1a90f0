#include "hal/jack/jack_devices.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>

#include "hal/jack/jack_channels.h"

namespace tolvane::hal {
namespace {

// The cycle lengths that servers accept. Some hardware has a smaller range; the server then refuses. A server
// admits new clients only once per cycle. With cycles of 8192 frames it would answer too late to be listed.
constexpr std::uint32_t kMinBufferFrames = 16;
constexpr std::uint32_t kMaxBufferFrames = 4096;

struct NumberedName {
  std::string_view stem;
  std::uint64_t number;
};

std::optional<NumberedName> splitNumber(std::string_view name) noexcept {
  const std::size_t stemLength = name.find_last_not_of("0123456789") + 1;
  std::uint64_t number = 0;
  const char* end = name.data() + name.size();
  const auto [parsedTo, error] = std::from_chars(name.data() + stemLength, end, number);
  if (error != std::errc{} || parsedTo != end) return std::nullopt;
  return NumberedName{name.substr(0, stemLength), number};
}

bool differByNumberAlone(const std::vector<std::string>& names) noexcept {
  return std::all_of(names.begin(), names.end(), [&names](const std::string& name) {
    const auto first = splitNumber(names.front());
    const auto other = splitNumber(name);
    return first && other && first->stem == other->stem;
  });
}

void orderChannels(std::vector<std::string>& names) {
  if (!differByNumberAlone(names)) return;
  std::stable_sort(names.begin(), names.end(), [](const std::string& left, const std::string& right) {
    return splitNumber(left)->number < splitNumber(right)->number;
  });
}

JackDevice& deviceOf(std::string_view client, std::vector<JackDevice>& devices) {
  const auto found = std::find_if(devices.begin(), devices.end(),
                                  [client](const JackDevice& device) { return device.client == client; });
  if (found != devices.end()) return *found;
  return devices.emplace_back(JackDevice{std::string(client), {}, {}});
}

}  // namespace

std::string_view jackClientOf(std::string_view portName) noexcept {
  return portName.substr(0, portName.find(':'));
}

std::vector<JackDevice> groupJackPorts(const std::vector<JackPort>& ports) {
  std::vector<JackDevice> devices;
  for (const JackPort& port : ports) {
    JackDevice& device = deviceOf(jackClientOf(port.name), devices);
    (port.isCapture ? device.capturePorts : device.playbackPorts).push_back(port.name);
  }
  for (JackDevice& device : devices) {
    orderChannels(device.capturePorts);
    orderChannels(device.playbackPorts);
  }
  return devices;
}

std::vector<JackPort> physicalJackPorts(const JackLibrary& library, jack_client_t* client) {
  const auto release = [&library](const char** list) { library.free(static_cast<void*>(list)); };
  const std::unique_ptr<const char*, decltype(release)> names(
      library.getPorts(client, nullptr, JACK_DEFAULT_AUDIO_TYPE, JackPortIsPhysical), release);
  std::vector<JackPort> ports;
  for (const char** name = names.get(); name != nullptr && *name != nullptr; ++name) {
    const jack_port_t* port = library.portByName(client, *name);
    if (port == nullptr) continue;  // gone since
    ports.push_back({*name, (library.portFlags(port) & JackPortIsOutput) != 0});
  }
  return ports;
}

JackClock jackClock(const JackLibrary& library, jack_client_t* client) {
  return {static_cast<double>(library.getSampleRate(client)), library.getBufferSize(client),
          !library.isPipeWire};
}

DeviceInfo describeJackDevice(const JackDevice& device, const JackClock& clock) {
  DeviceInfo info;
  info.uid = "jack:" + device.client;
  info.name = device.client;
  info.transportType = kAudioDeviceTransportTypeJack;
  info.inputStreams.assign(device.capturePorts.size(), 1);
  info.outputStreams.assign(device.playbackPorts.size(), 1);
  info.sampleRateHz = clock.sampleRateHz;
  info.bufferFrames = clock.bufferFrames;
  if (clock.canBeSet) {
    info.minBufferFrames = std::min(kMinBufferFrames, clock.bufferFrames);
    info.maxBufferFrames = std::max(kMaxBufferFrames, clock.bufferFrames);
  }
  return info;
}

std::vector<DeviceInfo> listJackDevices(const JackLibrary& library, jack_client_t* client) {
  const JackClock clock = jackClock(library, client);
  std::vector<DeviceInfo> devices;
  for (const JackDevice& device : groupJackPorts(physicalJackPorts(library, client))) {
    devices.push_back(describeJackDevice(device, clock));
    devices.back().inputs = jackChannels(library, client, device.capturePorts);
    devices.back().outputs = jackChannels(library, client, device.playbackPorts);
  }
  return devices;
}

}  // namespace tolvane::hal
