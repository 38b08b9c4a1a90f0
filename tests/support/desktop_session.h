// A user's sound as a desktop starts it: a message bus, PipeWire and WirePlumber with their default
// configuration. No hardware, no root. The cards are added as a user would add nodes, by a file in
// pipewire.conf.d.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

#include "support/pipewire_server.h"
#include "support/private_folder.h"

namespace tolvane::test {

/// The properties of the card's nodes in a session, where the manager sets their ports up. They are in no
/// group: PipeWire would start them with the group, before they have ports.
[[nodiscard]] std::vector<PipeWireProperties> sessionNodesOf(const PipeWireCard& card);

/// Runs from construction to destruction, or until the test program ends. Sets the environment so that every
/// client of this process finds only this session. Every failure throws std::runtime_error.
class DesktopSession {
 public:
  /// Waits until the session manager has given every card its ports.
  explicit DesktopSession(const std::vector<PipeWireCard>& cards, PipeWirePace pace = PipeWirePace::realTime);
  ~DesktopSession();
  DesktopSession(const DesktopSession&) = delete;
  DesktopSession& operator=(const DesktopSession&) = delete;

  void killManager();   // like a crash
  void startManager();  // after killManager(); waits until it has taken up its work
  void killServer();    // and the manager, which does not outlive the server
  void startServer();   // after killServer(); both

  [[nodiscard]] std::string configFolder() const { return home_ + "/.config"; }
  [[nodiscard]] const std::string& folder() const noexcept { return folder_.path(); }

 private:
  void setEnvironment() const;
  void startPipeWire();
  void startWirePlumber();
  [[nodiscard]] std::string logOf(const char* program) const {
    return folder_.path() + "/" + program + ".log";
  }

  std::vector<PipeWireProperties> nodes_;  // of the cards
  PrivateFolder folder_{"tolvane-session"};
  std::string home_ = folder_.path() + "/home";
  pid_t bus_ = -1;
  pid_t pipewire_ = -1;
  pid_t wireplumber_ = -1;
};

}  // namespace tolvane::test
