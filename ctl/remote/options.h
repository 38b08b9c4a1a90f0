#pragma once

#include <optional>
#include <string>

#include "ctl/control/command.h"
#include "ctl/terminal/exit_status.h"

namespace CLI {
class App;
}

namespace tolvane::ctl {

/// The port where `ctl` looks for a run if it is told no other.
inline constexpr const char* kDefaultControlAddress = "localhost:9001";

struct RemoteOptions {
  std::string address = kDefaultControlAddress;  // HOST:PORT of a run's --http
  std::string tokenPath;                         // empty: no token is said
  bool tls = false;
  std::string tlsAuthority;  // PEM file that the run's certificate must come from; empty: the system's
  bool json = false;         // print answers as they came
  bool watch = false;        // print events until a signal
  bool meters = false;       // also these
  /// What is to be asked. None: `watch`.
  std::optional<control::Command> command;
};

/// Declares the command `ctl`. Parsing fills `options`, then runs the command and sets `status`. Both must
/// outlive the parsing. [main-thread]
void declareRemote(CLI::App& program, RemoteOptions& options, ExitStatus& status);

}  // namespace tolvane::ctl
