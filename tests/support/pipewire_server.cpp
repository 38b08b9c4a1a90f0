#include "support/pipewire_server.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "hal/pipewire/library.h"

namespace tolvane::test {

namespace {

using namespace std::chrono_literals;

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

std::string configOf(const std::vector<PipeWireCard>& cards, PipeWirePace pace) {
  std::string head = kHead;
  replace(head, "$RATE", rateOf(pace));
  const bool isSlow = pace == PipeWirePace::slow;
  replace(head, "$RATES", isSlow ? rateOf(pace) : "44100 48000 96000");
  std::string driver = kDriver;
  const bool isPatient = pace == PipeWirePace::patient;
  replace(driver, "$DRIVER", isPatient ? "tolvane.patient.driver" : "support.node.driver");
  replace(driver, "$LIBRARY", isPatient ? "tolvane_patient_driver" : "support/libspa-support");
  std::ostringstream config;
  config << head << driver;
  for (const PipeWireCard& card : cards) {
    for (const PipeWireProperties& node : nodesOf(card)) {
      config << "    { factory = adapter args = {";
      for (const auto& [key, value] : node) {
        const bool isStructured = value.front() == '[' || value.front() == '{';
        config << ' ' << key << " = " << (isStructured ? value : '"' + value + '"');
      }
      config << " } }\n";
    }
  }
  config << "]\n";
  return config.str();
}

PipeWireProperties nodeOf(const PipeWireCard& card, const char* part, const char* mediaClass,
                          unsigned channels) {
  std::string positions = "[";
  for (unsigned channel = 0; channel < channels; ++channel) positions += " AUX" + std::to_string(channel);
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

/// True if the socket accepts connections. Its file exists shortly before it does.
bool isListenedTo(const std::string& socketFile) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socketFile.copy(address.sun_path, sizeof address.sun_path - 1);
  const int client = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool isTaken = ::connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(client);
  return isTaken;
}

/// Starts a process that removes the folder when its standard input closes, at the latest when this process
/// ends.
pid_t startGuard(const std::string& folder, int pipeEnd) {
  const char* script = "read -r line; rm -rf \"$0\"";
  std::array<char*, 5> arguments = {const_cast<char*>("sh"), const_cast<char*>("-c"),
                                    const_cast<char*>(script), const_cast<char*>(folder.c_str()), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipeEnd, STDIN_FILENO);
  pid_t guard = -1;
  const int error = posix_spawn(&guard, "/bin/sh", &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start the guard of the server's folder");
  return guard;
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

PipeWireServer::PipeWireServer(const std::vector<PipeWireCard>& cards, PipeWirePace pace) {
  std::string pattern = (std::filesystem::temp_directory_path() / "tolvane-pw-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a folder for the server");
  folder_ = pattern;
  configFile_ = folder_ + "/server.conf";
  lastServersRate = rateOf(pace);
  std::ofstream(configFile_) << configOf(cards, pace);

  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  guardPipe_ = ends[1];
  guard_ = startGuard(folder_, ends[0]);
  ::close(ends[0]);

  ::setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
  // The user's own configuration must have no effect.
  ::setenv("XDG_CONFIG_HOME", configFolder().c_str(), 1);
  ::unsetenv("PIPEWIRE_RUNTIME_DIR");
  ::unsetenv("PIPEWIRE_REMOTE");
  // Real-time scheduling must come from the system itself, not from a service on D-Bus.
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  start();
}

PipeWireServer::~PipeWireServer() {
  if (pid_ > 0) kill();
  ::close(guardPipe_);
  ::waitpid(guard_, nullptr, 0);
}

void PipeWireServer::start() {
  pid_ = ::fork();
  if (pid_ < 0) throw std::runtime_error("cannot fork");
  if (pid_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::setenv("SPA_PLUGIN_DIR", TOLVANE_SPA_PLUGINS, 1);
    ::execlp("pipewire", "pipewire", "-c", configFile_.c_str(), nullptr);
    ::_exit(127);
  }
  const std::string socket = folder_ + "/pipewire-0";
  for (int attempt = 0; attempt < 2000; ++attempt) {
    // The server listens before it has created the cards, but answers no client until then.
    if (isListenedTo(socket)) return;
    if (::waitpid(pid_, nullptr, WNOHANG) == pid_) {
      pid_ = -1;
      throw std::runtime_error("the pipewire program cannot be run");
    }
    std::this_thread::sleep_for(5ms);
  }
  throw std::runtime_error("the server has not come up");
}

void PipeWireServer::kill() {
  ::kill(pid_, SIGKILL);
  ::waitpid(pid_, nullptr, 0);
  pid_ = -1;
  std::filesystem::remove(folder_ + "/pipewire-0");
  std::filesystem::remove(folder_ + "/pipewire-0.lock");
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
