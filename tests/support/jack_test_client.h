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

/// A sample that encodes its channel (0 to 127) and its frame modulo 65536. It is exact in a 32-bit float and
/// never zero.
[[nodiscard]] float codedSample(std::size_t channel, std::uint64_t frame) noexcept;

/// A test's own client in the server's graph: a card (with physical ports, so that the driver lists it as a
/// device) or an ear (an ordinary client that records other ports' samples in the cycle in which they are
/// sent).
///
/// Signal ports are the client's outputs, "capture_1"…. They carry codedSample(channel, frame), with frames
/// counted from the client's first cycle, or the signal of setSignal(). Recording ports are its inputs,
/// "playback_1"….
class JackTestClient {
 public:
  using Signal = std::function<float(std::size_t channel, std::uint64_t frame)>;

  static JackTestClient card(const std::string& name, std::size_t captures, std::size_t playbacks);
  static JackTestClient ear(const std::string& name, std::size_t ports);

  /// Used by card() and ear(). Every port has these `flags`.
  JackTestClient(const std::string& name, std::size_t signals, std::size_t recordings, unsigned long flags);
  JackTestClient(const JackTestClient&) = delete;
  JackTestClient& operator=(const JackTestClient&) = delete;
  ~JackTestClient();

  /// Call these two before activate().
  void setSignal(Signal signal) { signal_ = std::move(signal); }
  void addMidiPort(const std::string& port);
  void activate();

  void connect(const std::string& from, const std::string& to);
  /// Connects a recording port, counted from 0, to the port `from`.
  void listen(std::size_t recordingPort, const std::string& from);
  void disconnect(const std::string& from, const std::string& to);
  void unregisterSignalPort(std::size_t channel);
  /// The names that a user gives to a port, here a signal port counted from 0.
  void addAlias(std::size_t channel, const std::string& alias);
  void setPrettyName(std::size_t channel, const std::string& name);
  void setBufferSize(jack_nframes_t frames);
  [[nodiscard]] std::vector<std::string> connectionsOf(const std::string& port) const;
  /// Expects that the port is connected to these. Waits, because the server's list changes only at its next
  /// cycle.
  void expectConnections(const std::string& port, const std::vector<std::string>& others) const;
  [[nodiscard]] std::string name() const { return jack_get_client_name(client_); }

  /// Records every recording port from the next cycle on, for `frames` frames or until endRecording().
  void record(std::size_t frames);
  /// Ends the recording early and keeps what there is. Returns false if the recording is complete by then, or
  /// does not end.
  [[nodiscard]] bool endRecording();
  [[nodiscard]] bool awaitRecording(std::chrono::seconds timeout = std::chrono::seconds(100));
  /// The finished recording: the samples of one port, and the index at which each cycle began.
  [[nodiscard]] const std::vector<float>& recording(std::size_t port) const { return recordings_[port]; }
  [[nodiscard]] const std::vector<std::size_t>& cycleStarts() const noexcept { return cycleStarts_; }

  /// Frames of the current recording so far. [any-thread]
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
