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
/// In frames; for a recording that the test itself ends. So long that it does not end earlier while the
/// machine stands still.
inline constexpr std::size_t kLongestRecording = 20 * kSecond;
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
inline constexpr std::size_t kLongWhile = kSecond;  // these builds fall far behind the clock
#else
inline constexpr std::size_t kLongWhile = 5 * kSecond;
#endif

/// The whole path: a card's signal goes through the server, the driver, the HAL's surface, the engine's
/// callback and back. An ear hears it in the same cycle.
class JackRoutingFixture : public JackFixture {
 protected:
  JackRoutingFixture() {
    static std::once_flag once;
    std::call_once(once, [] {
      // The longest waits that the HAL allows a driver.
      std::vector<std::unique_ptr<hal::Driver>> drivers;
      drivers.push_back(hal::makeJackDriver({.signOfLife = 4500ms, .start = 4500ms, .setting = 450ms}));
      hal::Registry::shared().useDrivers(std::move(drivers));
    });
  }

  void TearDown() override { engine_.stop(); }

  /// Starts one server for the whole program. The HAL follows it with a client of its own, and libjack has
  /// one server's shared memory per process. If a client of a new server opened before the HAL's client had
  /// left the old server, it would lose its place there.
  void startServer(std::uint32_t bufferFrames = 256) {
    // Never destroyed: it ends with the program, after the HAL.
    static const auto* const server = new JackServer(bufferFrames);
    ASSERT_NE(server, nullptr);
    JackTestClient::ear("clock", 1).setBufferSize(bufferFrames);
    EXPECT_TRUE(eventually([this] { return idOf("card") == kAudioObjectUnknown; }));  // of the previous test
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

  /// Waits until connections just made carry audio.
  static void settle(const JackTestClient& ear) {
    const std::uint64_t before = ear.cycles();
    EXPECT_TRUE(eventually([&] { return ear.cycles() > before + 10; }));
  }

  static void listen(JackTestClient& ear, std::size_t outputs) {
    for (std::size_t n = 0; n < outputs; ++n) ear.listen(n, "Tolvane:out_" + std::to_string(n + 1));
  }

  CoreAudioEngine engine_;
};

/// The code that codedSample() put into a sample.
inline std::uint32_t codeOf(float sample) {
  return static_cast<std::uint32_t>(std::lround(sample * static_cast<float>(1U << 24)));
}
inline std::uint32_t frameOf(float sample) {
  return codeOf(sample) & 0xFFFF;
}

/// Expects two recordings with the same samples, bit for bit; reports the first difference.
inline void expectSame(const std::vector<float>& heard, const std::vector<float>& wanted,
                       const std::string& what) {
  ASSERT_EQ(heard.size(), wanted.size());
  for (std::size_t i = 0; i < heard.size(); ++i) {
    ASSERT_EQ(heard[i], wanted[i]) << what << " at frame " << i << ": channel " << (codeOf(heard[i]) >> 16)
                                   << " frame " << frameOf(heard[i]);
  }
}

/// Expects a recording of channel 0 straight from the card to have every frame in order: nothing was lost.
inline void expectUnbroken(const std::vector<float>& reference) {
  for (std::size_t i = 0; i < reference.size(); ++i) {
    ASSERT_EQ(reference[i], codedSample(0, frameOf(reference[0]) + i)) << "at frame " << i;
  }
}

/// What `channel` carries while channel 0 carries the reference.
inline std::vector<float> codedLike(const std::vector<float>& reference, std::size_t channel) {
  std::vector<float> result;
  result.reserve(reference.size());
  for (const float sample : reference) result.push_back(codedSample(channel, frameOf(sample)));
  return result;
}

}  // namespace tolvane::test
