#pragma once

#include <cstdint>
#include <string>

#include <sys/types.h>

namespace tolvane::test {

/// A private jackd with the dummy driver; libjack in this process uses it as the default server. It ends with
/// the object, or with the test program, however that ends. At most one object may exist at a time.
class JackServer {
 public:
  /// Starts jackd and waits until it accepts clients; ends the test program if it does not. Given a sound
  /// card's PCM ("hw:Intel"), jackd drives that card instead of the dummy.
  explicit JackServer(std::uint32_t bufferFrames = 256, const std::string& alsaPcm = {});
  ~JackServer();
  JackServer(const JackServer&) = delete;
  JackServer& operator=(const JackServer&) = delete;

  /// Ends jackd with SIGKILL, like a crash, and waits until it has ended.
  void kill();
  /// Ends jackd with SIGTERM, as a user would, and waits until it has ended.
  void terminate();
  /// Stops the process until resume(), so that it answers nothing. Returns when all of its threads have
  /// stopped.
  void pause();
  void resume();

  /// Sets JACK's default server to a name that only this test program uses. No server of that name runs yet.
  static void choosePrivateName();

 private:
  void signalAndAwaitEnd(int signal);

  pid_t keeper_ = 0;  // the script that cleans up, even after a crash of the test program
  pid_t jackd_ = 0;
  int keeperInput_ = -1;  // closing it tells the keeper to end
};

}  // namespace tolvane::test
