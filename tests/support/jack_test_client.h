#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <jack/jack.h>

namespace tolvane::test {

/// A sample that says which channel and frame it is of, and is a 32-bit float exactly. Channels up to 127;
/// frames count modulo 65536. Never zero.
[[nodiscard]] float codedSample(std::size_t channel, std::uint64_t frame) noexcept;

/// What a test has in the server's graph beside the device's session: a card (with physical ports, so that it
/// is a device), or an ear (an ordinary client that records what other ports carry, in the very cycle).
///
/// Signal ports are the client's outputs, "capture_1"…, and carry codedSample(channel, frame), frames counted
/// from the client's first cycle on, or what setSignal() gave. Recording ports are its inputs, "playback_1"….
class JackTestClient {
 public:
  using Signal = std::function<float(std::size_t channel, std::uint64_t frame)>;

  static JackTestClient card(const std::string& name, std::size_t captures, std::size_t playbacks);
  static JackTestClient ear(const std::string& name, std::size_t ports);

  /// What the two above make; `flags` are those of every port.
  JackTestClient(const std::string& name, std::size_t signals, std::size_t recordings, unsigned long flags);
  JackTestClient(const JackTestClient&) = delete;
  JackTestClient& operator=(const JackTestClient&) = delete;
  ~JackTestClient();

  /// Before activate().
  void setSignal(Signal signal) { signal_ = std::move(signal); }
  void addMidiPort(const std::string& port);
  void activate();

  void connect(const std::string& from, const std::string& to);
  /// Connects a recording port, counted from 0.
  void listen(std::size_t recordingPort, const std::string& from);
  void disconnect(const std::string& from, const std::string& to);
  void unregisterSignalPort(std::size_t channel);
  void setBufferSize(jack_nframes_t frames);
  [[nodiscard]] std::vector<std::string> connectionsOf(const std::string& port) const;
  [[nodiscard]] std::string name() const { return jack_get_client_name(client_); }

  /// Records every recording port, from the next cycle on: so many frames, or fewer when it is ended before.
  void record(std::size_t frames);
  /// Ends the recording, which is then as long as it has become; false when that was all that it was to be.
  [[nodiscard]] bool endRecording();
  [[nodiscard]] bool awaitRecording(std::chrono::seconds timeout = std::chrono::seconds(100));
  /// Of the finished recording: the samples of one port, and where each of its cycles began.
  [[nodiscard]] const std::vector<float>& recording(std::size_t port) const { return recordings_[port]; }
  [[nodiscard]] const std::vector<std::size_t>& cycleStarts() const noexcept { return cycleStarts_; }

  /// Frames recorded so far, of the recording that goes on. [any-thread]
  [[nodiscard]] std::size_t recordedFrames() const noexcept { return recorded_.load(); }
  /// Cycles run so far. [any-thread]
  [[nodiscard]] std::uint64_t cycles() const noexcept { return cycles_.load(); }

 private:
  void process(jack_nframes_t frames) noexcept;
  void sendSignal(jack_nframes_t frames) noexcept;
  void takeRecording(jack_nframes_t frames) noexcept;

  jack_client_t* client_;
  std::vector<jack_port_t*> signalPorts_;
  std::vector<jack_port_t*> recordingPorts_;
  Signal signal_ = &codedSample;
  std::uint64_t frame_ = 0;

  std::vector<std::vector<float>> recordings_;
  std::vector<std::size_t> cycleStarts_;
  std::size_t wanted_ = 0;
  std::atomic<std::size_t> recorded_{0};
  std::atomic<bool> recording_{false};
  std::atomic<bool> endAsked_{false};
  std::atomic<std::uint64_t> cycles_{0};
};

}  // namespace tolvane::test
