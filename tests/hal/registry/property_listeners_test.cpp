// Which listeners are called after a change, how often, and until when.
#include <mutex>

#include <gtest/gtest.h>

#include "hal/virtual/virtual_device_run.h"

namespace tolvane::test {

namespace {

using namespace std::chrono_literals;

/// What a listener was called with.
struct Calls {
  std::atomic<int> count{0};
  std::atomic<AudioObjectID> object{0};
  std::atomic<UInt32> selector{0};
  std::atomic<UInt32> scope{0};
  std::atomic<bool> severalAddresses{false};
};

OSStatus note(AudioObjectID object, UInt32 count, const AudioObjectPropertyAddress* addresses,
              void* clientData) {
  auto& calls = *static_cast<Calls*>(clientData);
  calls.object = object;
  calls.selector = addresses[0].mSelector;
  calls.scope = addresses[0].mScope;
  if (count != 1) calls.severalAddresses = true;
  ++calls.count;
  return noErr;
}

class PropertyListeners : public VirtualDeviceTest {
 protected:
  OSStatus add(AudioObjectPropertyAddress where, AudioObjectPropertyListenerProc proc, void* data) {
    return AudioObjectAddPropertyListener(device_, &where, proc, data);
  }
  OSStatus remove(AudioObjectPropertyAddress where, AudioObjectPropertyListenerProc proc, void* data) {
    return AudioObjectRemovePropertyListener(device_, &where, proc, data);
  }
  void makeRate(double sampleRateHz) {
    hal::VirtualDeviceConfig config;
    config.sampleRateHz = sampleRateHz;
    configure(config);
  }
  const AudioObjectPropertyAddress rate_ = address(kAudioDevicePropertyNominalSampleRate);
};

TEST_F(PropertyListeners, hearOfTheirPropertyAlone) {
  Calls rate;
  Calls frames;
  const auto framesAddress = address(kAudioDevicePropertyBufferFrameSize);
  ASSERT_EQ(add(rate_, note, &rate), noErr);
  ASSERT_EQ(add(framesAddress, note, &frames), noErr);
  makeRate(44100.0);
  ASSERT_TRUE(eventually([&] { return rate.count.load() == 1; }));
  EXPECT_EQ(rate.object.load(), device_);
  EXPECT_EQ(rate.selector.load(), kAudioDevicePropertyNominalSampleRate);
  EXPECT_EQ(rate.scope.load(), kAudioObjectPropertyScopeGlobal);
  EXPECT_FALSE(rate.severalAddresses.load());
  EXPECT_EQ(frames.count.load(), 0);
  EXPECT_EQ(remove(rate_, note, &rate), noErr);
  EXPECT_EQ(remove(framesAddress, note, &frames), noErr);
}

TEST_F(PropertyListeners, hearOfNamesAndStreamsToo) {
  Calls name;
  Calls inputs;
  Calls outputs;
  const auto in = address(kAudioDevicePropertyStreamConfiguration, kAudioObjectPropertyScopeInput);
  const auto out = address(kAudioDevicePropertyStreamConfiguration, kAudioObjectPropertyScopeOutput);
  ASSERT_EQ(add(address(kAudioObjectPropertyName), note, &name), noErr);
  ASSERT_EQ(add(in, note, &inputs), noErr);
  ASSERT_EQ(add(out, note, &outputs), noErr);
  hal::VirtualDeviceConfig config;
  config.name = "Another";
  config.inputStreams = {4};
  configure(config);
  EXPECT_TRUE(eventually([&] { return name.count.load() == 1 && inputs.count.load() == 1; }));
  EXPECT_TRUE(eventually([&] { return outputs.count.load() == 1; }));
  EXPECT_EQ(remove(address(kAudioObjectPropertyName), note, &name), noErr);
  EXPECT_EQ(remove(in, note, &inputs), noErr);
  EXPECT_EQ(remove(out, note, &outputs), noErr);
}

TEST_F(PropertyListeners, addedTwiceAreCalledOnce) {
  Calls twice;
  Calls last;
  ASSERT_EQ(add(rate_, note, &twice), noErr);
  ASSERT_EQ(add(rate_, note, &twice), noErr);
  ASSERT_EQ(add(rate_, note, &last), noErr);  // called after the other listener
  makeRate(44100.0);
  ASSERT_TRUE(eventually([&] { return last.count.load() == 1; }));
  EXPECT_EQ(twice.count.load(), 1);
  EXPECT_EQ(remove(rate_, note, &twice), noErr);
  makeRate(96000.0);
  ASSERT_TRUE(eventually([&] { return last.count.load() == 2; }));
  EXPECT_EQ(twice.count.load(), 1);
  EXPECT_EQ(remove(rate_, note, &last), noErr);
}

TEST_F(PropertyListeners, neverAddedAreRemovedWithoutComplaint) {
  Calls calls;
  EXPECT_EQ(remove(rate_, note, &calls), noErr);
}

/// A listener that stays in its call until the test releases it.
struct Slow {
  std::atomic<bool> inside{false};
  std::atomic<bool> go{false};
  std::atomic<bool> left{false};
};

OSStatus stay(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void* clientData) {
  auto& slow = *static_cast<Slow*>(clientData);
  slow.inside = true;
  while (!slow.go.load()) std::this_thread::sleep_for(1ms);
  slow.left = true;
  return noErr;
}

TEST_F(PropertyListeners, areNotRunningOnceRemoved) {
  Slow slow;
  ASSERT_EQ(add(rate_, stay, &slow), noErr);
  makeRate(44100.0);
  ASSERT_TRUE(eventually([&] { return slow.inside.load(); }));
  std::atomic<bool> removed{false};
  std::thread remover([&] {
    EXPECT_EQ(remove(rate_, stay, &slow), noErr);
    EXPECT_TRUE(slow.left.load());
    removed = true;
  });
  std::this_thread::sleep_for(20ms);
  EXPECT_FALSE(removed.load());
  slow.go = true;
  remover.join();
}

TEST_F(PropertyListeners, thatStayAwayHoldNobodyElseUp) {
  Slow slow;
  ASSERT_EQ(add(rate_, stay, &slow), noErr);
  makeRate(44100.0);
  ASSERT_TRUE(eventually([&] { return slow.inside.load(); }));
  EXPECT_EQ(deviceList().back(), device_);
  std::atomic<int> cycles{0};
  run([&](auto&, auto&) { ++cycles; }, [&] { return cycles.load() > 2; });
  slow.go = true;
  EXPECT_EQ(remove(rate_, stay, &slow), noErr);
}

struct SelfRemover {
  AudioObjectID device;
  std::atomic<int> calls{0};
  std::atomic<OSStatus> status{-1};
};

OSStatus removeSelf(AudioObjectID, UInt32, const AudioObjectPropertyAddress* addresses, void* clientData) {
  auto& self = *static_cast<SelfRemover*>(clientData);
  self.status = AudioObjectRemovePropertyListener(self.device, &addresses[0], removeSelf, clientData);
  ++self.calls;
  return noErr;
}

TEST_F(PropertyListeners, mayRemoveThemselves) {
  SelfRemover self{device_};
  Calls last;
  ASSERT_EQ(add(rate_, removeSelf, &self), noErr);
  ASSERT_EQ(add(rate_, note, &last), noErr);
  makeRate(44100.0);
  ASSERT_TRUE(eventually([&] { return last.count.load() == 1; }));
  makeRate(96000.0);
  ASSERT_TRUE(eventually([&] { return last.count.load() == 2; }));
  EXPECT_EQ(self.calls.load(), 1);
  EXPECT_EQ(self.status.load(), noErr);
  EXPECT_EQ(remove(rate_, note, &last), noErr);
}

/// Every second cycle takes three periods.
class StumblingTap final : public hal::VirtualTap {
 public:
  void observe(std::uint64_t, std::uint32_t, const AudioBufferList&) noexcept override {
    if (++cycles % 2 == 0) std::this_thread::sleep_for(30ms);
  }
  std::atomic<int> cycles{0};
};

TEST_F(PropertyListeners, hearOfEveryOverload) {
  StumblingTap tap;
  hal::VirtualDeviceConfig config;
  config.bufferFrames = 480;
  config.outputTap = &tap;
  configure(config);
  const auto overloads = address(kAudioDeviceProcessorOverload);
  Calls calls;
  ASSERT_EQ(add(overloads, note, &calls), noErr);
  const auto before = valueOf<UInt32>(device_, kAudioDeviceProcessorOverload);
  run([](auto&, auto&) {}, [&] { return tap.cycles.load() >= 30; });
  const UInt32 counted = valueOf<UInt32>(device_, kAudioDeviceProcessorOverload) - before;
  EXPECT_GE(counted, 14U);
  EXPECT_TRUE(eventually([&] { return calls.count.load() == static_cast<int>(counted); }))
      << calls.count.load() << " of " << counted;
  EXPECT_EQ(remove(overloads, note, &calls), noErr);
}

}  // namespace

}  // namespace tolvane::test
