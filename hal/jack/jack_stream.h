#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "hal/driver/call_gate.h"
#include "hal/driver/driver.h"
#include "hal/jack/cycle_clock.h"
#include "hal/jack/jack_client.h"
#include "hal/jack/jack_devices.h"
#include "hal/jack/jack_loss.h"
#include "hal/jack/port_buffers.h"

namespace tolvane::hal {

/// Our client in the server's graph while a device runs: a port for each channel of the device, connected
/// with it, and the callbacks of libjack. The SessionClient is called between open() and shut() alone.
class JackStream {
 public:
  /// `client` must live until shut() has returned.
  JackStream(const JackLibrary& library, DeviceInfo device, SessionClient& client);
  JackStream(const JackStream&) = delete;
  JackStream& operator=(const JackStream&) = delete;
  ~JackStream() = default;

  /// Enters the graph and connects; the outputs are silent until open(). Blocks while the server hangs.
  /// noErr, or a status of AudioDeviceStart. [not-io]
  [[nodiscard]] OSStatus enter();

  /// Lets cycles and changes through to the client, those that happened since enter() included. [not-io]
  void open();

  /// When it has returned, the client is called no more. [not-io]
  void shut() noexcept { gate_.shut(); }

  /// Makes awaitEnd() return. [any-thread]
  void requestEnd() noexcept;
  void awaitEnd() const noexcept { ending_.wait(false); }

  /// Shuts, and leaves the graph. Blocks while the server hangs. Once, at the end, whatever enter() said.
  /// [not-io]
  void leave() noexcept;

 private:
  [[nodiscard]] OSStatus findDevice();
  void setCallbacks() noexcept;
  void setFormatCallbacks() noexcept;
  [[nodiscard]] bool registerPorts();
  [[nodiscard]] bool registerPorts(PortBuffers& buffers, const char* prefix, std::size_t count,
                                   unsigned long flags);
  [[nodiscard]] OSStatus connectPorts();
  [[nodiscard]] OSStatus connectPorts(const std::string& devicePort, const char* source, const char* target);
  [[nodiscard]] OSStatus failure() const noexcept;

  void process(jack_nframes_t frames) noexcept;
  void reportFormat() noexcept;
  void reportOverload() noexcept;
  void lose() noexcept;
  void loseServer() noexcept;
  void portRemoved(jack_port_id_t port) noexcept;

  const JackLibrary& library_;
  const DeviceInfo info_;
  SessionClient& client_;
  CallGate gate_;

  JackDevice device_;  // these two are fixed once deviceKnown_ is set
  std::vector<std::pair<std::string, const jack_port_t*>> devicePorts_;
  PortBuffers inputs_;
  PortBuffers outputs_;
  CycleClock clock_;

  std::atomic<bool> lost_{false};  // the server or the device: for good
  std::atomic<bool> ending_{false};
  JackLoss loss_;
  std::atomic<jack_nframes_t> sampleRateHz_{0};
  std::atomic<jack_nframes_t> bufferFrames_{0};
  std::atomic<jack_nframes_t> reportedSampleRateHz_;
  std::atomic<jack_nframes_t> reportedBufferFrames_;

  jack_client_t* jack_ = nullptr;  // closed by leave(), and never cleared: callbacks run until it is closed
  std::atomic<bool> deviceKnown_{false};
};

}  // namespace tolvane::hal
