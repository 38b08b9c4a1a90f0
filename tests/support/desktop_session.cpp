#include "support/desktop_session.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "support/pipewire_client.h"

namespace tolvane::test {

std::vector<PipeWireProperties> sessionNodesOf(const PipeWireCard& card) {
  std::vector<PipeWireProperties> nodes = nodesOf(card);
  for (PipeWireProperties& node : nodes) {
    node.erase("adapter.auto-port-config");
    node.erase("node.group");
  }
  return nodes;
}

DesktopSession::DesktopSession(const std::vector<PipeWireCard>& cards, PipeWirePace pace) {
  setEnvironment();
  for (const PipeWireCard& card : cards) {
    for (PipeWireProperties& node : sessionNodesOf(card)) nodes_.push_back(std::move(node));
  }
  const std::string dropIns = configFolder() + "/pipewire/pipewire.conf.d";
  std::filesystem::create_directories(dropIns);
  std::ofstream(dropIns + "/cards.conf") << "context.objects = [" << pipeWireObjects(nodes_, pace) << "]\n";
  const std::string bus = folder_.path() + "/bus";
  bus_ = test::startServer({"dbus-daemon", "--session", "--address=unix:path=" + bus, "--nofork"}, {},
                           logOf("dbus-daemon"));
  awaitSocket(bus, bus_);
  startServer();
}

DesktopSession::~DesktopSession() {
  if (wireplumber_ > 0) test::killServer(wireplumber_);
  if (pipewire_ > 0) test::killServer(pipewire_);
  test::killServer(bus_);
}

void DesktopSession::setEnvironment() const {
  hidePipeWireServers(folder_.path(), configFolder());
  ::setenv("HOME", home_.c_str(), 1);
  ::setenv("XDG_STATE_HOME", (home_ + "/.local/state").c_str(), 1);
  ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + folder_.path() + "/bus").c_str(), 1);
}

void DesktopSession::startServer() {
  startPipeWire();
  startWirePlumber();
}

void DesktopSession::killServer() {
  test::killServer(std::exchange(pipewire_, -1));
  killManager();
  std::filesystem::remove(folder_.path() + "/pipewire-0");
  std::filesystem::remove(folder_.path() + "/pipewire-0.lock");
}

void DesktopSession::killManager() {
  test::killServer(std::exchange(wireplumber_, -1));
}

void DesktopSession::startManager() {
  startWirePlumber();
}

void DesktopSession::startPipeWire() {
  pipewire_ = test::startServer({"pipewire"}, {{"SPA_PLUGIN_DIR", pipeWirePlugins()}}, logOf("pipewire"));
  awaitSocket(folder_.path() + "/pipewire-0", pipewire_);
}

void DesktopSession::startWirePlumber() {
  wireplumber_ = test::startServer({"wireplumber"}, {}, logOf("wireplumber"));
  PipeWireClient client;
  client.awaitDefaultSink();
  for (const PipeWireProperties& node : nodes_) client.awaitPorts(node);
}

}  // namespace tolvane::test
