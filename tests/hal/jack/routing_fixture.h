#pragma once

#include <cmath>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "engine/core_audio_engine.h"
#include "hal/jack/jack_fixture.h"
#include "hal/registry/registry.h"

namespace tolvane::test {

inline constexpr std::size_t kSecond = 48000;  // frames
/// Of a recording that the test ends: so long that no standing still of the machine ends it before.
inline constexpr std::size_t kLongestRecording = 20 * kSecond;
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
inline constexpr std::size_t kLongWhile = kSecond;  // these builds fall far behind the clock
#else
inline constexpr std::size_t kLongWhile = 5 * kSecond;
#endif

/// The whole way: a card's signal through the server, the driver, the HAL's surface, the engine's callback
/// and back, heard by an ear in the very cycle.
class JackRoutingFixture : public JackFixture {
 protected:
  JackRoutingFixture() {
    static std::once_flag once;
    std::call_once(once, [] {
      // As patient as the HAL lets a driver be.
      std::vector<std::unique_ptr<hal::Driver>> drivers;
      drivers.push_back(hal::makeJackDriver({.signOfLife = 4500ms, .start = 4500ms, .setting = 450ms}));
      hal::Registry::shared().useDrivers(std::move(drivers));
    });
  }

  void TearDown() override { engine_.stop(); }

  /// One server for the whole program. The HAL follows it with a client of its own, and libjack has one
  /// server's shared memory for a process: a client of a next server, opened before the HAL has taken leave
  /// of the one before, would lose its place there.
  void startServer(std::uint32_t bufferFrames = 256) {
    // Never destroyed: it goes with the program, after the HAL.
    static const auto* const server = new JackServer(bufferFrames);
    ASSERT_NE(server, nullptr);
    JackTestClient::ear("clock", 1).setBufferSize(bufferFrames);
    EXPECT_TRUE(eventually([this] { return idOf("card") == kAudioObjectUnknown; }));  // of the test before
  }

  AudioDeviceID idOf(const std::string& card) {
    for (const AudioDeviceInfo& info : engine_.getAllDevices()) {
      if (info.name == card) return info.id;
    }
    return kAudioObjectUnknown;
  }

  void route(const std::string& card, std::span<const PatchConnection> routes) {
    AudioDeviceID id = kAudioObjectUnknown;
    EXPECT_TRUE(eventually([&] { return (id = idOf(card)) != kAudioObjectUnknown; })) << card;
    const auto error = engine_.start(id, routes);
    EXPECT_FALSE(error) << error->errorDescription();
  }

  void publish(std::span<const PatchConnection> routes) {
    engine_.writeConnections(engine_.contextPtr(), routes);
  }

  /// Waits until connections that were just made carry.
  static void settle(const JackTestClient& ear) {
    const std::uint64_t before = ear.cycles();
    EXPECT_TRUE(eventually([&] { return ear.cycles() > before + 10; }));
  }

  static void listen(JackTestClient& ear, std::size_t outputs) {
    for (std::size_t n = 0; n < outputs; ++n) ear.listen(n, "Tolvane:out_" + std::to_string(n + 1));
  }

  CoreAudioEngine engine_;
};

/// What codedSample() was made of.
inline std::uint32_t codeOf(float sample) {
  return static_cast<std::uint32_t>(std::lround(sample * static_cast<float>(1U << 24)));
}
inline std::uint32_t frameOf(float sample) {
  return codeOf(sample) & 0xFFFF;
}

/// The samples of two recordings are the same, bit for bit; says where they first are not.
inline void expectSame(const std::vector<float>& heard, const std::vector<float>& wanted,
                       const std::string& what) {
  ASSERT_EQ(heard.size(), wanted.size());
  for (std::size_t i = 0; i < heard.size(); ++i) {
    ASSERT_EQ(heard[i], wanted[i]) << what << " at frame " << i << ": channel " << (codeOf(heard[i]) >> 16)
                                   << " frame " << frameOf(heard[i]);
  }
}

/// A recording of channel 0 straight from the card has every frame, in order: nothing was lost on the way.
inline void expectUnbroken(const std::vector<float>& reference) {
  for (std::size_t i = 0; i < reference.size(); ++i) {
    ASSERT_EQ(reference[i], codedSample(0, frameOf(reference[0]) + i)) << "at frame " << i;
  }
}

/// What `channel` carries where channel 0 carries the reference.
inline std::vector<float> codedLike(const std::vector<float>& reference, std::size_t channel) {
  std::vector<float> result;
  result.reserve(reference.size());
  for (const float sample : reference) result.push_back(codedSample(channel, frameOf(sample)));
  return result;
}

}  // namespace tolvane::test
