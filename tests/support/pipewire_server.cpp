#include "support/pipewire_server.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

#include "hal/pipewire/library.h"

namespace tolvane::test {

namespace {

constexpr const char* kHead = R"(
context.properties = {
    core.daemon = true
    core.name = pipewire-0
    support.dbus = false
    link.max-buffers = 16
    mem.warn-mlock = false
    default.clock.rate = $RATE
    default.clock.allowed-rates = [ $RATES ]
    default.clock.quantum = 256
    default.clock.min-quantum = 32
    default.clock.max-quantum = 2048
    settings.check-quantum = true
    settings.check-rate = true
}
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    audio.adapt = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
    api.alsa.* = alsa/libspa-alsa
}
context.modules = [
    { name = libpipewire-module-rt args = { nice.level = -11 rt.prio = 70 } flags = [ ifexists nofail ] }
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-profiler }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-spa-node-factory }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-client-device }
    { name = libpipewire-module-access args = { } }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-link-factory }
    { name = libpipewire-module-session-manager }
]
context.objects = [
    { factory = metadata args = { metadata.name = default } }
    { factory = spa-node-factory args = { factory.name = support.node.driver node.name = Dummy-Driver
        node.group = pipewire.dummy priority.driver = 20000 } }
)";

// A driver separate from the cards. A card that drives runs last in its own cycle, so its samples would
// arrive one cycle late.
constexpr const char* kDriver = R"(
    { factory = spa-node-factory args = { factory.name = $DRIVER library.name = $LIBRARY node.name = Cards-Driver
        node.group = cards priority.driver = 40000 } }
)";

void replace(std::string& text, const std::string& placeholder, const std::string& value) {
  text.replace(text.find(placeholder), placeholder.size(), value);
}

const char* rateOf(PipeWirePace pace) {
  switch (pace) {
    case PipeWirePace::slow:
      return "256";
    default:
      return "48000";
  }
}

std::string lastServersRate = rateOf(PipeWirePace::realTime);

PipeWireProperties nodeOf(const PipeWireCard& card, const char* part, const char* mediaClass,
                          unsigned channels) {
  std::string positions = "[";
  for (unsigned channel = 0; channel < channels; ++channel) {
    const bool isNamed = channel < card.positions.size();
    positions += isNamed ? " " + card.positions[channel] : " AUX" + std::to_string(channel);
  }
  PipeWireProperties node = {
      {"factory.name", "support.null-audio-sink"},
      {"node.name", card.name + part},
      {"node.description", card.description.empty() ? card.name : card.description},
      {"media.class", mediaClass},
      {"audio.channels", std::to_string(channels)},
      {"audio.position", positions + " ]"},
      {"node.group", "cards"},
      {"priority.driver", "30000"},
      {"object.linger", "true"},
      {"adapter.auto-port-config", "{ mode = dsp monitor = true position = preserve }"},
  };
  if (card.alsaPcm.empty()) {
    // Without these, PipeWire 1.4 and later give a null node one port for all its channels.
    node["audio.format"] = "F32P";
    node["audio.rate"] = lastServersRate;
  } else {
    const bool isSink = std::string_view(mediaClass) == "Audio/Sink";
    node["factory.name"] = isSink ? "api.alsa.pcm.sink" : "api.alsa.pcm.source";
    node["media.class"] = isSink ? mediaClass : "Audio/Source";
    node["api.alsa.path"] = card.alsaPcm;
  }
  if (card.cardId) {
    node["device.id"] = std::to_string(*card.cardId);
    node["device.name"] = card.name;
  }
  return node;
}

}  // namespace

bool isSilentAtAQuantumChange() {
  return hal::pipewire::isSince(pw_get_library_version(), 1, 4);
}

std::vector<PipeWireProperties> nodesOf(const PipeWireCard& card) {
  if (card.isDuplexNode) return {nodeOf(card, "", "Audio/Duplex", card.inputs)};
  std::vector<PipeWireProperties> nodes;
  if (card.inputs != 0) nodes.push_back(nodeOf(card, ".source", "Audio/Source/Virtual", card.inputs));
  if (card.outputs != 0) nodes.push_back(nodeOf(card, ".sink", "Audio/Sink", card.outputs));
  return nodes;
}

void hidePipeWireServers(const std::string& runtimeFolder, const std::string& configFolder) {
  ::setenv("XDG_RUNTIME_DIR", runtimeFolder.c_str(), 1);
  // The user's own configuration must have no effect.
  ::setenv("XDG_CONFIG_HOME", configFolder.c_str(), 1);
  ::unsetenv("PIPEWIRE_RUNTIME_DIR");
  ::unsetenv("PIPEWIRE_REMOTE");
  // Real-time scheduling must come from the system itself, not from a service on D-Bus.
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);
}

std::string pipeWireObjects(const std::vector<PipeWireProperties>& nodes, PipeWirePace pace) {
  std::string driver = kDriver;
  const bool isPatient = pace == PipeWirePace::patient;
  replace(driver, "$DRIVER", isPatient ? "tolvane.patient.driver" : "support.node.driver");
  replace(driver, "$LIBRARY", isPatient ? "tolvane_patient_driver" : "support/libspa-support");
  std::ostringstream objects;
  objects << driver;
  for (const PipeWireProperties& node : nodes) {
    objects << "    { factory = adapter args = {";
    for (const auto& [key, value] : node) {
      const bool isStructured = value.front() == '[' || value.front() == '{';
      objects << ' ' << key << " = " << (isStructured ? value : '"' + value + '"');
    }
    objects << " } }\n";
  }
  return objects.str();
}

namespace {

std::string configOf(const std::vector<PipeWireCard>& cards, PipeWirePace pace) {
  std::string head = kHead;
  replace(head, "$RATE", rateOf(pace));
  const bool isSlow = pace == PipeWirePace::slow;
  replace(head, "$RATES", isSlow ? rateOf(pace) : "44100 48000 96000");
  lastServersRate = rateOf(pace);
  std::vector<PipeWireProperties> nodes;
  for (const PipeWireCard& card : cards) {
    for (PipeWireProperties& node : nodesOf(card)) nodes.push_back(std::move(node));
  }
  return head + pipeWireObjects(nodes, pace) + "]\n";
}

}  // namespace

const char* pipeWirePlugins() {
  return TOLVANE_SPA_PLUGINS;
}

PipeWireServer::PipeWireServer(const std::vector<PipeWireCard>& cards, PipeWirePace pace) : pace_(pace) {
  hidePipeWireServers(folder_.path(), configFolder());
  start(cards);
}

PipeWireServer::~PipeWireServer() {
  if (pid_ > 0) kill();
}

void PipeWireServer::start(const std::vector<PipeWireCard>& cards) {
  std::ofstream(configFile_) << configOf(cards, pace_);
  start();
}

void PipeWireServer::start() {
  pid_ = startServer({"pipewire", "-c", configFile_}, {{"SPA_PLUGIN_DIR", pipeWirePlugins()}});
  // The server listens before it has created the cards, but answers no client until then.
  awaitSocket(folder_.path() + "/pipewire-0", pid_);
}

void PipeWireServer::kill() {
  killServer(std::exchange(pid_, -1));
  std::filesystem::remove(folder_.path() + "/pipewire-0");
  std::filesystem::remove(folder_.path() + "/pipewire-0.lock");
}

void PipeWireServer::hang() {
  ::kill(pid_, SIGSTOP);
  int status = 0;
  ::waitpid(pid_, &status, WUNTRACED);
}

void PipeWireServer::unhang() {
  ::kill(pid_, SIGCONT);
}

}  // namespace tolvane::test
