#include "support/jack_test_client.h"

#include <algorithm>
#include <memory>

#include <gtest/gtest.h>
#include <jack/metadata.h>
#include <jack/midiport.h>

#include "support/eventually.h"

#if defined(__SANITIZE_THREAD__)
// Clients pass samples to each other through the server's shared memory, in an order that the server's
// signals enforce. ThreadSanitizer does not see these signals, so it would report this client's accesses to
// the samples as races. Memory shared within the program is still checked.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
  return "race:tolvane::test::JackTestClient::";
}
#endif

namespace tolvane::test {

float codedSample(std::size_t channel, std::uint64_t frame) noexcept {
  const auto code = static_cast<std::uint32_t>((channel + 1) << 16 | (frame & 0xFFFF));
  return static_cast<float>(code) / static_cast<float>(1U << 24);  // 23 bits over a power of two: exact
}

JackTestClient JackTestClient::card(const std::string& name, std::size_t captures, std::size_t playbacks) {
  return {name, captures, playbacks, JackPortIsPhysical | JackPortIsTerminal};
}

JackTestClient JackTestClient::ear(const std::string& name, std::size_t ports) {
  return {name, 0, ports, 0};
}

JackTestClient::JackTestClient(const std::string& name, std::size_t signals, std::size_t recordings,
                               unsigned long flags)
    : client_(jack_client_open(name.c_str(), JackNoStartServer, nullptr)), recordings_(recordings) {
  if (client_ == nullptr) {
    ADD_FAILURE() << "no server for " << name;
    return;
  }
  const auto add = [this](const std::string& port, unsigned long portFlags) {
    return jack_port_register(client_, port.c_str(), JACK_DEFAULT_AUDIO_TYPE, portFlags, 0);
  };
  for (std::size_t n = 1; n <= signals; ++n) {
    signalPorts_.push_back(add("capture_" + std::to_string(n), flags | JackPortIsOutput));
  }
  for (std::size_t n = 1; n <= recordings; ++n) {
    recordingPorts_.push_back(add("playback_" + std::to_string(n), flags | JackPortIsInput));
  }
  jack_set_process_callback(
      client_,
      [](jack_nframes_t frames, void* self) {
        static_cast<JackTestClient*>(self)->process(frames);
        return 0;
      },
      this);
}

JackTestClient::~JackTestClient() {
  if (client_ != nullptr) jack_client_close(client_);
}

void JackTestClient::addMidiPort(const std::string& port) {
  EXPECT_NE(jack_port_register(client_, port.c_str(), JACK_DEFAULT_MIDI_TYPE,
                               JackPortIsPhysical | JackPortIsTerminal | JackPortIsOutput, 0),
            nullptr);
}

void JackTestClient::activate() {
  EXPECT_EQ(jack_activate(client_), 0);
}

void JackTestClient::connect(const std::string& from, const std::string& to) {
  EXPECT_EQ(jack_connect(client_, from.c_str(), to.c_str()), 0) << from << " to " << to;
}

void JackTestClient::listen(std::size_t recordingPort, const std::string& from) {
  connect(from, jack_port_name(recordingPorts_[recordingPort]));
}

void JackTestClient::disconnect(const std::string& from, const std::string& to) {
  EXPECT_EQ(jack_disconnect(client_, from.c_str(), to.c_str()), 0) << from << " to " << to;
}

void JackTestClient::unregisterSignalPort(std::size_t channel) {
  EXPECT_EQ(jack_port_unregister(client_, signalPorts_[channel]), 0);
}

void JackTestClient::addAlias(std::size_t channel, const std::string& alias) {
  EXPECT_EQ(jack_port_set_alias(signalPorts_[channel], alias.c_str()), 0);
}

void JackTestClient::setPrettyName(std::size_t channel, const std::string& name) {
  EXPECT_EQ(jack_set_property(client_, jack_port_uuid(signalPorts_[channel]), JACK_METADATA_PRETTY_NAME,
                              name.c_str(), "text/plain"),
            0);
}

void JackTestClient::setBufferSize(jack_nframes_t frames) {
  EXPECT_EQ(jack_set_buffer_size(client_, frames), 0);
}

std::vector<std::string> JackTestClient::connectionsOf(const std::string& port) const {
  const std::unique_ptr<const char*, void (*)(const char**)> names(
      jack_port_get_all_connections(client_, jack_port_by_name(client_, port.c_str())),
      [](const char** list) { jack_free(static_cast<void*>(list)); });
  std::vector<std::string> result;
  for (const char** name = names.get(); name != nullptr && *name != nullptr; ++name)
    result.emplace_back(*name);
  return result;
}

void JackTestClient::expectConnections(const std::string& port,
                                       const std::vector<std::string>& others) const {
  eventually([&] { return connectionsOf(port) == others; });
  EXPECT_EQ(connectionsOf(port), others) << port;
}

void JackTestClient::record(std::size_t frames) {
  for (auto& channel : recordings_) channel.assign(frames, 0.0F);
  cycleStarts_.clear();
  cycleStarts_.reserve(frames);
  wanted_ = frames;
  recorded_ = 0;
  endAsked_ = false;
  recording_.store(true, std::memory_order_release);
}

bool JackTestClient::endRecording() {
  endAsked_ = true;
  if (!awaitRecording() || recorded_ == wanted_) return false;
  for (auto& channel : recordings_) channel.resize(recorded_);
  return true;
}

bool JackTestClient::awaitRecording(std::chrono::seconds timeout) {
  return eventually(timeout, [this] { return !recording_.load(std::memory_order_acquire); });
}

void JackTestClient::process(jack_nframes_t frames) noexcept {
  if (recording_.load(std::memory_order_acquire)) takeRecording(frames);
  sendSignal(frames);
  cycles_.fetch_add(1);
}

void JackTestClient::sendSignal(jack_nframes_t frames) noexcept {
  for (std::size_t channel = 0; channel < signalPorts_.size(); ++channel) {
    auto* samples = static_cast<float*>(jack_port_get_buffer(signalPorts_[channel], frames));
    if (samples == nullptr) continue;  // the test has unregistered the port
    for (jack_nframes_t i = 0; i < frames; ++i) samples[i] = signal_(channel, frame_ + i);
  }
  frame_ += frames;
}

void JackTestClient::takeRecording(jack_nframes_t frames) noexcept {
  const std::size_t start = recorded_.load(std::memory_order_relaxed);
  const std::size_t count = std::min<std::size_t>(frames, wanted_ - start);
  for (std::size_t port = 0; port < recordingPorts_.size(); ++port) {
    const auto* samples = static_cast<const float*>(jack_port_get_buffer(recordingPorts_[port], frames));
    std::copy_n(samples, count, recordings_[port].begin() + static_cast<std::ptrdiff_t>(start));
  }
  cycleStarts_.push_back(start);
  recorded_.store(start + count);
  if (start + count == wanted_ || endAsked_) recording_.store(false, std::memory_order_release);
}

}  // namespace tolvane::test
