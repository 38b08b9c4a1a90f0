#include "hal/jack/jack_stream.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "hal/jack/jack_channels.h"
#include "hal/jack/uncancelled.h"

namespace tolvane::hal {
namespace {

/// The JackStream that a libjack callback was registered with.
JackStream& streamOf(void* argument) noexcept {
  return *static_cast<JackStream*>(argument);
}

}  // namespace

JackStream::JackStream(const JackLibrary& library, DeviceInfo device, SessionClient& client)
    : library_(library),
      info_(std::move(device)),
      client_(client),
      inputs_(library),
      outputs_(library),
      reportedSampleRateHz_(static_cast<jack_nframes_t>(info_.sampleRateHz)),
      reportedBufferFrames_(info_.bufferFrames) {}

OSStatus JackStream::enter() {
  jack_status_t status;
  jack_ = openJackClient(library_, "Tolvane", status).release();
  if (jack_ == nullptr) {
    return (status & JackServerFailed) != 0 ? kAudioHardwareNotReadyError : kAudioHardwareUnspecifiedError;
  }
  const OSStatus found = findDevice();
  if (found != noErr) return found;
  setCallbacks();
  if (!registerPorts()) return failure();
  setLinks();
  portsKnown_.store(true, std::memory_order_release);
  if (library_.activate(jack_) != 0) return failure();
  return connectPorts();
}

void JackStream::open() {
  gate_.open();
  reportFormat();
  if (lost_.load()) lose();
  // Somebody may have removed a link already.
  linksChanged_ = true;
  wake();
}

void JackStream::requestEnd() noexcept {
  if (ending_.exchange(true)) return;
  JackFarewells::begin();
  wake();
}

/// libjack's callbacks must not talk to the server: they wake the thread that is in awaitEnd().
void JackStream::wake() noexcept {
  wakes_.fetch_add(1);
  wakes_.notify_all();
}

void JackStream::awaitEnd() {
  for (;;) {
    const std::uint32_t seen = wakes_.load();
    if (ending_.load()) return;
    if (linksChanged_.exchange(false)) reportRemovedLinks();
    wakes_.wait(seen);
  }
}

void JackStream::noteConnection(jack_port_id_t source, jack_port_id_t target, bool isMade) noexcept {
  if (!portsKnown_.load(std::memory_order_acquire)) return;
  const PortLinks::Link changed{library_.portById(jack_, source), library_.portById(jack_, target)};
  if (!inputLinks_.noteChange(changed, isMade) && !outputLinks_.noteChange(changed, isMade)) return;
  linksChanged_ = true;
  wake();
}

/// True if the server answers. It has then finished what it had begun to do.
bool JackStream::isAnswered() const noexcept {
  char* const uuid = library_.getUuidForClientName(jack_, library_.getClientName(jack_));
  if (uuid != nullptr) library_.free(uuid);
  return uuid != nullptr;
}

/// The server reports a disconnection also when one of the ports goes, and before the port has gone.
void JackStream::reportRemovedLinks() {
  if (!isAnswered() || lost_.load()) return;
  RemovedLinks removed;
  const auto collect = [&](const std::vector<std::string>& theirs, const PortLinks& links,
                           std::vector<UInt32>& channels) {
    for (std::size_t channel = 0; channel < theirs.size(); ++channel) {
      const bool hasPort = library_.portByName(jack_, theirs[channel].c_str()) != nullptr;
      if (hasPort && links.isRemoved(channel)) channels.push_back(static_cast<UInt32>(channel));
    }
  };
  collect(device_.capturePorts, inputLinks_, removed.inputs);
  collect(device_.playbackPorts, outputLinks_, removed.outputs);
  if (removed == reportedRemoved_) return;
  const CallGate::Pass pass(gate_);
  if (!pass) return;  // before open() or after leave()
  reportedRemoved_ = removed;
  client_.linksRemoved(removed);
}

void JackStream::leave() noexcept {
  requestEnd();
  // If the server is dead, libjack ends its threads asynchronously. None of them may be inside a call of the
  // SessionClient then.
  shut();
  if (jack_ != nullptr) {
    loss_.await();
    library_.deactivate(jack_);
    loss_.await();  // the server may have died just now
    library_.clientClose(jack_);
  }
  JackFarewells::end();
}

OSStatus JackStream::findDevice() {
  const std::vector<JackDevice> devices = groupJackPorts(physicalJackPorts(library_, jack_));
  const auto found = std::find_if(devices.begin(), devices.end(), [this](const JackDevice& device) {
    const DeviceInfo info = describeJackDevice(device, {info_.sampleRateHz, info_.bufferFrames});
    return info.uid == info_.uid && info.inputStreams == info_.inputStreams &&
           info.outputStreams == info_.outputStreams;
  });
  if (found == devices.end()) return kAudioHardwareBadDeviceError;
  device_ = *found;
  for (const auto* names : {&device_.capturePorts, &device_.playbackPorts}) {
    for (const std::string& name : *names) {
      devicePorts_.emplace_back(name, library_.portByName(jack_, name.c_str()));
    }
  }
  return noErr;
}

bool JackStream::registerPorts() {
  return registerPorts(inputs_, "in_", device_.capturePorts, JackPortIsInput) &&
         registerPorts(outputs_, "out_", device_.playbackPorts, JackPortIsOutput);
}

/// `served`: the device's ports, each of which gets one of ours.
bool JackStream::registerPorts(PortBuffers& buffers, const char* prefix,
                               const std::vector<std::string>& served, unsigned long flags) {
  const std::vector<ChannelInfo> channels = jackChannels(library_, jack_, served);
  std::vector<jack_port_t*> ports;
  for (const ChannelInfo& channel : channels) {
    const std::string name = prefix + std::to_string(ports.size() + 1);
    ports.push_back(library_.portRegister(jack_, name.c_str(), JACK_DEFAULT_AUDIO_TYPE, flags, 0));
    if (ports.back() == nullptr) return false;
    setChannelAlias(library_, ports.back(), channel);
  }
  buffers.setPorts(std::move(ports));
  return true;
}

void JackStream::setLinks() {
  const std::vector<jack_port_t*>& inputs = inputs_.ports();
  const std::vector<jack_port_t*>& outputs = outputs_.ports();
  std::vector<PortLinks::Link> links;
  for (std::size_t n = 0; n < inputs.size(); ++n) links.push_back({devicePorts_[n].second, inputs[n]});
  inputLinks_.setLinks(std::exchange(links, {}));
  for (std::size_t n = 0; n < outputs.size(); ++n) {
    links.push_back({outputs[n], devicePorts_[inputs.size() + n].second});
  }
  outputLinks_.setLinks(std::move(links));
}

OSStatus JackStream::connectPorts() {
  // Connect the inputs first. Device and client form a loop, and the server delays the connection that closes
  // it by one cycle. In this order we get the device's input in the cycle that it belongs to.
  for (std::size_t channel = 0; channel < inputs_.ports().size(); ++channel) {
    const std::string& from = device_.capturePorts[channel];
    const OSStatus status = connectPorts(from, from.c_str(), library_.portName(inputs_.ports()[channel]));
    if (status != noErr) return status;
  }
  for (std::size_t channel = 0; channel < outputs_.ports().size(); ++channel) {
    const std::string& to = device_.playbackPorts[channel];
    const OSStatus status = connectPorts(to, library_.portName(outputs_.ports()[channel]), to.c_str());
    if (status != noErr) return status;
  }
  return noErr;
}

OSStatus JackStream::connectPorts(const std::string& devicePort, const char* source, const char* target) {
  const int error = library_.connect(jack_, source, target);
  if (error == 0 || error == EEXIST) return noErr;
  const bool gone = library_.portByName(jack_, devicePort.c_str()) == nullptr;
  return gone && !lost_.load() ? OSStatus{kAudioHardwareBadDeviceError} : failure();
}

OSStatus JackStream::failure() const noexcept {
  return lost_.load() ? kAudioHardwareNotReadyError : kAudioHardwareUnspecifiedError;
}

void JackStream::setCallbacks() noexcept {
  constexpr auto kOnCycle = uncancelled([](jack_nframes_t frames, void* self) {
    streamOf(self).process(frames);
    return 0;
  });
  library_.setProcessCallback(jack_, kOnCycle, this);
  constexpr auto kOnXrun = uncancelled([](void* self) {
    streamOf(self).reportOverload();
    return 0;
  });
  library_.setXrunCallback(jack_, kOnXrun, this);
  constexpr auto kOnPort = uncancelled([](jack_port_id_t port, int registered, void* self) {
    if (registered == 0) streamOf(self).portRemoved(port);
  });
  library_.setPortRegistrationCallback(jack_, kOnPort, this);
  constexpr auto kOnConnection =
      uncancelled([](jack_port_id_t source, jack_port_id_t target, int isMade, void* self) {
        streamOf(self).noteConnection(source, target, isMade != 0);
      });
  library_.setPortConnectCallback(jack_, kOnConnection, this);
  // Some servers call only the first of these two, others only the second.
  constexpr auto kOnShutdown = uncancelled([](void* self) { streamOf(self).loseServer(); });
  library_.onShutdown(jack_, kOnShutdown, this);
  constexpr auto kOnInfoShutdown =
      uncancelled([](jack_status_t, const char*, void* self) { streamOf(self).loseServer(); });
  library_.onInfoShutdown(jack_, kOnInfoShutdown, this);
  setFormatCallbacks();
}

void JackStream::setFormatCallbacks() noexcept {
  sampleRateHz_ = library_.getSampleRate(jack_);
  bufferFrames_ = library_.getBufferSize(jack_);
  constexpr auto kOnBufferSize = uncancelled([](jack_nframes_t frames, void* self) {
    streamOf(self).bufferFrames_ = frames;
    streamOf(self).reportFormat();
    return 0;
  });
  library_.setBufferSizeCallback(jack_, kOnBufferSize, this);
  constexpr auto kOnSampleRate = uncancelled([](jack_nframes_t rateHz, void* self) {
    streamOf(self).sampleRateHz_ = rateHz;
    streamOf(self).reportFormat();
    return 0;
  });
  library_.setSampleRateCallback(jack_, kOnSampleRate, this);
}

void JackStream::process(jack_nframes_t frames) noexcept {
  const CallGate::Pass pass(gate_);
  if (!pass) {
    outputs_.silence(frames);
    return;
  }
  bool jumped = false;
  const CycleTimes times = clock_.stamp(library_, jack_, frames, jumped);
  // PipeWire's libjack reports a lost cycle in no other way; jackd calls the xrun callback.
  if (jumped && library_.isPipeWire) client_.overload();
  client_.cycle({&times.now, inputs_.gather(frames), &times.input, outputs_.gather(frames), &times.output});
}

void JackStream::reportFormat() noexcept {
  const CallGate::Pass pass(gate_);
  if (!pass) return;
  const jack_nframes_t rateHz = sampleRateHz_;
  const jack_nframes_t frames = bufferFrames_;
  // At every activation the server repeats values that it has told before.
  const bool newRate = reportedSampleRateHz_.exchange(rateHz) != rateHz;
  const bool newLength = reportedBufferFrames_.exchange(frames) != frames;
  if (newRate || newLength) client_.formatChanged(rateHz, frames);
}

void JackStream::reportOverload() noexcept {
  const CallGate::Pass pass(gate_);
  if (pass) client_.overload();
}

void JackStream::lose() noexcept {
  lost_ = true;
  const CallGate::Pass pass(gate_);
  if (pass) client_.aliveChanged(false);
}

void JackStream::loseServer() noexcept {
  lose();
  loss_.note();
  requestEnd();
}

void JackStream::portRemoved(jack_port_id_t port) noexcept {
  if (!portsKnown_.load(std::memory_order_acquire)) return;
  const jack_port_t* removed = library_.portById(jack_, port);
  const bool ours = std::any_of(devicePorts_.begin(), devicePorts_.end(), [&](const auto& known) {
    // One of the two libraries still knows a port that has gone, the other does not.
    return removed != nullptr ? known.second == removed
                              : library_.portByName(jack_, known.first.c_str()) == nullptr;
  });
  if (ours) lose();
}

}  // namespace tolvane::hal
