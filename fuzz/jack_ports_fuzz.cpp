// Lists the devices of a JACK server that may report anything: port names, aliases, pretty names, flags,
// ports that are gone again, rates and cycle lengths. Every port must end up in exactly one device.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "bytes.h"
#include "hal/jack/jack_devices.h"
#include "require.h"

// The library declares its types and leaves them without members.
struct _jack_port {
  std::string name;
  int flags;
  bool isGone;
  std::string label;  // an alias of the port, and its pretty name
};

namespace tolvane::fuzz {
namespace {

struct Server {
  std::vector<_jack_port> ports;
  std::uint32_t rateHz = 0;
  std::uint32_t frames = 0;
};
Server server;

const char** getPorts(jack_client_t* /*client*/, const char* /*name*/, const char* /*type*/,
                      unsigned long /*flags*/) {
  if (server.ports.empty()) return nullptr;
  auto** const names = static_cast<const char**>(std::calloc(server.ports.size() + 1, sizeof(char*)));
  for (std::size_t i = 0; i < server.ports.size(); ++i) names[i] = server.ports[i].name.c_str();
  return names;
}

jack_port_t* portByName(jack_client_t* /*client*/, const char* name) {
  for (_jack_port& port : server.ports) {
    if (port.name == name) return port.isGone ? nullptr : &port;
  }
  return nullptr;
}

int portFlags(const jack_port_t* port) {
  return port->flags;
}

constexpr int kPortNameSize = 320;

/// Fills the room of the first alias, if the label is long enough without a NUL at its end. There is no
/// other.
int portGetAliases(const jack_port_t* port, char* const aliases[2]) {
  port->label.copy(aliases[0], kPortNameSize);
  return port->label.empty() ? 0 : 1;
}

/// The pretty names of some ports. The port's address serves as its identifier.
int getProperty(jack_uuid_t subject, const char* /*key*/, char** value, char** type) {
  const auto* const port = reinterpret_cast<const _jack_port*>(subject);
  if (port->label.size() % 2 == 0) return -1;
  *value = strdup(port->label.c_str());
  *type = nullptr;
  return 0;
}

hal::JackLibrary fakeLibrary() {
  hal::JackLibrary library;
  library.getPorts = getPorts;
  library.portByName = portByName;
  library.portFlags = portFlags;
  library.portGetAliases = portGetAliases;
  library.portNameSize = [] { return kPortNameSize; };
  library.portUuid = [](const jack_port_t* port) { return reinterpret_cast<jack_uuid_t>(port); };
  library.getProperty = getProperty;
  library.getSampleRate = [](jack_client_t*) { return server.rateHz; };
  library.getBufferSize = [](jack_client_t*) { return server.frames; };
  library.free = [](void* list) { std::free(list); };
  return library;
}

void checkDevices(const std::vector<hal::JackPort>& ports) {
  std::size_t found = 0;
  std::set<std::string> clients;
  for (const hal::JackDevice& device : hal::groupJackPorts(ports)) {
    require(clients.insert(device.client).second);
    found += device.capturePorts.size() + device.playbackPorts.size();
    for (const auto* names : {&device.capturePorts, &device.playbackPorts}) {
      for (const std::string& name : *names) require(hal::jackClientOf(name) == device.client);
    }
  }
  require(found == ports.size());
}

void list(Bytes input) {
  static const hal::JackLibrary library = fakeLibrary();
  server = {};
  server.rateHz = input.number<std::uint32_t>();
  server.frames = input.number<std::uint32_t>();
  while (!input.isEmpty() && server.ports.size() < 64) {
    const std::uint8_t kind = input.byte();
    const std::string name = input.text();
    const bool isLabelled = (kind & 0x40) != 0;
    server.ports.push_back({name, kind & 0x3F, kind >= 0xE0, isLabelled ? input.text() : std::string()});
  }
  checkDevices(hal::physicalJackPorts(library, nullptr));
  for (const hal::DeviceInfo& info : hal::listJackDevices(library, nullptr)) {
    require(info.maxBufferFrames == 0 ||
            (info.minBufferFrames <= info.bufferFrames && info.bufferFrames <= info.maxBufferFrames));
  }
}

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  tolvane::fuzz::list({bytes, size});
  return 0;
}
