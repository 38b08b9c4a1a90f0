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
#include "hal/jack/port_links.h"

namespace tolvane::hal {

/// Our client in the server's graph while a device runs. It has a connected port for each channel of the
/// device, and libjack's callbacks. A connection that somebody else removes stays removed, and is reported.
/// Calls the SessionClient only between open() and shut().
class JackStream {
 public:
  /// `client` must live until shut() has returned.
  JackStream(const JackLibrary& library, DeviceInfo device, SessionClient& client);
  JackStream(const JackStream&) = delete;
  JackStream& operator=(const JackStream&) = delete;
  ~JackStream() = default;

  /// Enters the graph and connects the ports. The outputs are silent until open(). Blocks while the server
  /// hangs. Returns noErr or an error of AudioDeviceStart. [not-io]
  [[nodiscard]] OSStatus enter();

  /// From now on passes cycles and changes on to the client, also the changes since enter(). [not-io]
  void open();

  /// After it returns, the client is not called again. [not-io]
  void shut() noexcept { gate_.shut(); }

  /// Makes awaitEnd() return. [any-thread]
  void requestEnd() noexcept;
  /// Meanwhile reports connections that somebody else removes. Blocks while the server hangs. [not-io]
  void awaitEnd();

  /// Calls shut() and leaves the graph. Blocks while the server hangs. Must be called once, at the end, also
  /// if enter() failed. [not-io]
  void leave() noexcept;

 private:
  [[nodiscard]] OSStatus findDevice();
  void setCallbacks() noexcept;
  void setFormatCallbacks() noexcept;
  [[nodiscard]] bool registerPorts();
  [[nodiscard]] bool registerPorts(PortBuffers& buffers, const char* prefix,
                                   const std::vector<std::string>& served, unsigned long flags);
  void setLinks();
  [[nodiscard]] OSStatus connectPorts();
  [[nodiscard]] OSStatus connectPorts(const std::string& devicePort, const char* source, const char* target);
  [[nodiscard]] OSStatus failure() const noexcept;

  void process(jack_nframes_t frames) noexcept;
  void reportFormat() noexcept;
  void reportOverload() noexcept;
  void reportRemovedLinks();
  [[nodiscard]] bool isAnswered() const noexcept;
  void wake() noexcept;
  void lose() noexcept;
  void loseServer() noexcept;
  void portRemoved(jack_port_id_t port) noexcept;
  void noteConnection(jack_port_id_t source, jack_port_id_t target, bool isMade) noexcept;

  const JackLibrary& library_;
  const DeviceInfo info_;
  SessionClient& client_;
  CallGate gate_;

  JackDevice device_;  // this and all ports are fixed once portsKnown_ is set
  std::vector<std::pair<std::string, const jack_port_t*>> devicePorts_;
  PortBuffers inputs_;
  PortBuffers outputs_;
  PortLinks inputLinks_;
  PortLinks outputLinks_;
  CycleClock clock_;

  std::atomic<bool> lost_{false};  // the server or the device, for good
  std::atomic<bool> ending_{false};
  std::atomic<std::uint32_t> wakes_{0};    // calls of wake()
  std::atomic<bool> linksChanged_{false};  // since awaitEnd() looked
  RemovedLinks reportedRemoved_;           // used by awaitEnd() only
  JackLoss loss_;
  std::atomic<jack_nframes_t> sampleRateHz_{0};
  std::atomic<jack_nframes_t> bufferFrames_{0};
  std::atomic<jack_nframes_t> reportedSampleRateHz_;
  std::atomic<jack_nframes_t> reportedBufferFrames_;

  jack_client_t* jack_ = nullptr;  // closed by leave(), never cleared: callbacks use it until it is closed
  std::atomic<bool> portsKnown_{false};
};

}  // namespace tolvane::hal
