// A USB sound device is unplugged and plugged in again and again while a callback runs on it.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "alsa_guest/guest_machine.h"
#include "alsa_guest/usb_bus.h"
#include "hal/hal_client.h"

namespace tolvane::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kTimes = 20;
constexpr milliseconds kLongestAbsence{2000};  // from the plug until the first cycle is played
constexpr std::uint32_t kPeriodFrames = 1024;
constexpr std::uint64_t kSoundingCycles = 20;
constexpr std::uint64_t kCyclesInDevice = 2;  // not played yet: the device holds 1536 frames
constexpr long kMoreKib = 128;
const std::string kUid = "alsa:" + std::string(UsbBus::kIdentity);
// What the callback plays: exact in 16 bits.
constexpr UsbBus::Frame kRouted{0x1200, -0x2400};

/// What the device plays of it.
UsbBus::Frame heard() {
  const auto turnDown = [](std::int16_t sample) {
    return static_cast<std::int16_t>(std::floor(sample * UsbBus::kVolume));
  };
  return {turnDown(kRouted.left), turnDown(kRouted.right)};
}

void fill(const AudioBuffer& buffer, std::int16_t sample) {
  auto* const samples = static_cast<float*>(buffer.mData);
  std::fill_n(samples, buffer.mDataByteSize / sizeof(float), static_cast<float>(sample) / 32768.0F);
}

std::size_t openDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

/// The memory that the process occupies, in KiB.
long residentKib() {
  long pages = 0;
  std::ifstream statm("/proc/self/statm");
  statm >> pages >> pages;
  return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

class AlsaUsb : public testing::Test {
 protected:
  void SetUp() override {
    bus_.plugIn();
    device_ = expectDeviceOf(kUid);
    ASSERT_NE(device_, kAudioObjectUnknown);
    const auto where = address(kAudioDevicePropertyBufferFrameSize);
    ASSERT_EQ(AudioObjectSetPropertyData(device_, &where, 0, nullptr, sizeof kPeriodFrames, &kPeriodFrames),
              noErr);
  }

  void cycle(const AudioBufferList& input, const AudioBufferList& output) {
    if (input.mNumberBuffers == 0 && output.mNumberBuffers == 2) {
      fill(output.mBuffers[0], kRouted.left);
      fill(output.mBuffers[1], kRouted.right);
      ++cycles_;
    } else {
      wrongBuffers_ = true;
    }
  }

  [[nodiscard]] bool runs(std::uint64_t cycles) {
    return eventually([this, end = cycles_ + cycles] { return cycles_ >= end; });
  }

  /// The hardware's buffer is full of silence when a session starts. So this is the number of cycles until
  /// the frames of the first are played.
  [[nodiscard]] std::uint64_t cyclesUntilHeard() const {
    return valueOf<UInt32>(device_, kTolvaneDevicePropertyPeriods) + 1;
  }

  void unplug() {
    bus_.unplug();
    EXPECT_TRUE(eventually([this] { return !isAlive(device_); }));
    EXPECT_TRUE(eventually([] { return deviceOf(kUid) == kAudioObjectUnknown; }));
  }

  /// Plugs the device in and returns how long it takes until it sounds.
  milliseconds plugIn(std::uint64_t cyclesUntilHeard) {
    const auto begin = Clock::now();
    bus_.plugIn();
    EXPECT_TRUE(runs(cyclesUntilHeard));
    return std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
  }

  /// The unplugged device has played what was routed to it, each output on its own channel.
  static void expectSounded(std::uint64_t cycles) {
    std::uint64_t right = 0;
    std::uint64_t wrong = 0;
    UsbBus::played([&](const UsbBus::Frame& frame) {
      if (frame == heard()) {
        ++right;
      } else if (right > 0 || frame != UsbBus::Frame{}) {  // silence comes first
        ++wrong;
      }
    });
    EXPECT_GE(right, cycles * kPeriodFrames);
    EXPECT_EQ(wrong, 0U);
  }

  UsbBus bus_;
  AudioObjectID device_ = kAudioObjectUnknown;
  std::atomic<std::uint64_t> cycles_{0};
  std::atomic<bool> wrongBuffers_{false};
};

TEST_F(AlsaUsb, SoundsAgainSoonAndUnderItsOwnNumberTwentyTimes) {
  RegisteredProc proc(
      device_, [this](const AudioBufferList& input, const AudioBufferList& output) { cycle(input, output); });
  ASSERT_EQ(proc.start(), noErr);
  const std::uint64_t untilHeard = cyclesUntilHeard();
  std::size_t descriptors = 0;
  long kib = 0;
  for (int time = 1; time <= kTimes; ++time) {
    ASSERT_TRUE(runs(untilHeard + kSoundingCycles + kCyclesInDevice));
    unplug();
    expectSounded(kSoundingCycles);
    const milliseconds away = plugIn(untilHeard);
    EXPECT_LE(away, kLongestAbsence) << "the " << time << "th time";
    EXPECT_TRUE(eventually([this] { return isAlive(device_); }));
    EXPECT_EQ(expectDeviceOf(kUid), device_);
    if (time == 2) {  // by then everything is loaded that ever will be
      descriptors = openDescriptors();
      kib = residentKib();
    }
    std::printf("%2d: heard after %lld ms, %zu descriptors, %ld KiB\n", time,
                static_cast<long long>(away.count()), openDescriptors(), residentKib());
  }
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_LE(residentKib(), kib + kMoreKib);
  EXPECT_FALSE(wrongBuffers_);
  EXPECT_EQ(proc.stop(), noErr);
}

}  // namespace
}  // namespace tolvane::test
