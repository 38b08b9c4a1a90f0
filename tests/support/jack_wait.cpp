// jack_wait NAME PID: waits until the JACK server NAME accepts clients. PID is the server's process. Fails if
// that process ends, or after 30 s.
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include <jack/jack.h>
#include <unistd.h>

namespace {

void silence(const char* /*message*/) {}

bool joins(const char* server) {
  jack_client_t* const client = jack_client_open(
      "wait", static_cast<jack_options_t>(JackNoStartServer | JackServerName), nullptr, server);
  if (client == nullptr) return false;
  jack_client_close(client);
  return true;
}

/// True if the process has ended, also if its parent has not reaped it yet.
bool hasEnded(const std::string& pid) {
  std::ifstream file("/proc/" + pid + "/stat");
  std::string text;
  return !std::getline(file, text) || text.find(") Z ") != std::string::npos;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  alarm(30);  // also covers a server that hangs while this client connects
  jack_set_error_function(&silence);
  jack_set_info_function(&silence);
  while (!joins(argv[1])) {
    if (hasEnded(argv[2])) return 1;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return 0;
}
