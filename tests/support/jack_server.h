#pragma once

#include <cstdint>
#include <string>

#include <sys/types.h>

namespace tolvane::test {

/// A jackd with the dummy driver, for this test program alone: libjack finds it as the default server. It
/// goes with the object, and with the test program however that ends. One at a time.
class JackServer {
 public:
  /// Starts it and waits until it takes clients; ends the test program when it does not. With a sound card's
  /// name ("hw:Intel") it drives that instead of the dummy.
  explicit JackServer(std::uint32_t bufferFrames = 256, const std::string& alsaPcm = {});
  ~JackServer();
  JackServer(const JackServer&) = delete;
  JackServer& operator=(const JackServer&) = delete;

  /// Ends it at once, as a crash would, and returns when it is gone.
  void kill();
  /// Ends it as its user would, and returns when it is gone.
  void terminate();
  /// Hangs it, until resume().
  void pause();
  void resume();

  /// Makes JACK's default server one that is not running, of a name of its own.
  static void choosePrivateName();

 private:
  void signalAndAwaitEnd(int signal);

  pid_t keeper_ = 0;  // the script that outlives us to clear up
  pid_t jackd_ = 0;
  int keeperInput_ = -1;  // its end is the keeper's sign
};

}  // namespace tolvane::test
