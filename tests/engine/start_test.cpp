// A start that succeeds: the calls, the context that the callback gets, and that audio then passes.
#include "engine_fixture.h"
#include "support/buffer_list.h"

namespace tolvane::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Truly;

using StartTest = EngineTest;

TEST_F(StartTest, CountsChannelsThenRegistersThenStarts) {
  EXPECT_EQ(engine_.start(9, {}), std::nullopt);
  EXPECT_THAT(hal_.calls(), ElementsAre("AudioObjectGetPropertyDataSize(9, slay inpt 0)",       //
                                        "AudioObjectGetPropertyData(9, slay inpt 0, size 40)",  //
                                        "AudioObjectGetPropertyDataSize(9, slay outp 0)",       //
                                        "AudioObjectGetPropertyData(9, slay outp 0, size 72)",  //
                                        "AudioDeviceCreateIOProcID(9)",                         //
                                        "AudioDeviceStart(9, proc 1)"));
}

TEST_F(StartTest, LeavesTheEngineRunning) {
  ASSERT_EQ(engine_.start(9, {}), std::nullopt);
  EXPECT_TRUE(engine_.isRunning());
  EXPECT_EQ(engine_.currentDeviceID(), 9U);
  ASSERT_EQ(hal_.registrations().size(), 1U);
  const ScriptedRegistration& registration = hal_.registrations()[0];
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(engine_.procID()), registration.number);
  EXPECT_TRUE(registration.started);
}

TEST_F(StartTest, RegistersTheRoutingCallbackWithTheContextAsItsData) {
  ASSERT_EQ(engine_.start(9, {}), std::nullopt);
  ASSERT_EQ(hal_.registrations().size(), 1U);
  EXPECT_EQ(hal_.registrations()[0].proc, &halIOProc);
  EXPECT_EQ(hal_.registrations()[0].clientData, engine_.contextPtr());
  EXPECT_NE(engine_.contextPtr(), nullptr);
}

TEST_F(StartTest, RegistersTheCallbackItWasGiven) {
  constexpr AudioDeviceIOProc kOwn = [](AudioObjectID, const AudioTimeStamp*, const AudioBufferList*,
                                        const AudioTimeStamp*, AudioBufferList*, const AudioTimeStamp*,
                                        void*) -> OSStatus { return noErr; };
  CoreAudioEngine engine(kOwn);
  ASSERT_EQ(engine.start(9, {}), std::nullopt);
  ASSERT_EQ(hal_.registrations().size(), 1U);
  EXPECT_EQ(hal_.registrations()[0].proc, kOwn);
  engine.stop();
}

TEST_F(StartTest, PutsTheDevicesChannelCountsIntoTheContext) {
  ASSERT_EQ(engine_.start(9, {}), std::nullopt);
  EXPECT_EQ(engine_.contextPtr()->inputChannelCount, 10);
  EXPECT_EQ(engine_.contextPtr()->outputChannelCount, 4);
}

TEST_F(StartTest, PublishesTheActiveRoutesBeforeTheCallbackIsRegistered) {
  const std::vector<PatchConnection> routes = {{3, 1, 0.5F, true}, {4, 2, 2.0F, false}, {9, 3, 1.0F, true}};
  IOProcContext atRegistration{};
  hal_.onCall = [&](const std::string& call) {
    if (call == "AudioDeviceCreateIOProcID(9)") atRegistration = *engine_.contextPtr();
  };
  ASSERT_EQ(engine_.start(9, routes), std::nullopt);

  EXPECT_EQ(atRegistration.activeBuf, 1);
  EXPECT_EQ(atRegistration.countA, 0);
  ASSERT_EQ(atRegistration.countB, 2);
  const auto isRoute = [](std::int32_t src, std::int32_t dst, float gain) {
    return Truly([=](const PatchEntry& e) { return e.src == src && e.dst == dst && e.gain == gain; });
  };
  EXPECT_THAT(atRegistration.patchesB[0], isRoute(3, 1, 0.5F));
  EXPECT_THAT(atRegistration.patchesB[1], isRoute(9, 3, 1.0F));
  EXPECT_THAT(std::span(atRegistration.patchesB).subspan(2), Each(isRoute(-1, -1, 1.0F)));
  EXPECT_THAT(atRegistration.patchesA, Each(isRoute(-1, -1, 1.0F)));
}

TEST_F(StartTest, IsNotRunningUntilTheDeviceHasStarted) {
  bool ranAtAnyCall = false;
  hal_.onCall = [&](const std::string&) { ranAtAnyCall |= engine_.isRunning(); };
  ASSERT_EQ(engine_.start(9, {}), std::nullopt);
  EXPECT_FALSE(ranAtAnyCall);
}

TEST_F(StartTest, RunsSilentWithNoRoutes) {
  ASSERT_EQ(engine_.start(7, {}), std::nullopt);
  BufferList input;
  BufferList output;
  input.add(2, 4, 0.25F);
  output.add(2, 4, 9.0F);
  ASSERT_TRUE(hal_.runCycle(input.get(), output.get()));
  EXPECT_THAT(output.copyOf(0), Each(0.0F));
}

TEST_F(StartTest, RoutesTheDevicesAudio) {
  const std::vector<PatchConnection> routes = {{1, 0, 0.5F, true}};
  ASSERT_EQ(engine_.start(7, routes), std::nullopt);
  BufferList input;
  BufferList output;
  input.add(2, 3, 0.0F);
  input.samples(0)[1] = 1.0F;
  input.samples(0)[3] = 2.0F;
  input.samples(0)[5] = -4.0F;
  output.add(2, 3, 9.0F);
  ASSERT_TRUE(hal_.runCycle(input.get(), output.get()));
  EXPECT_THAT(output.channel(0, 0), ElementsAre(0.5F, 1.0F, -2.0F));
  EXPECT_THAT(output.channel(0, 1), ElementsAre(0.0F, 0.0F, 0.0F));
}

TEST_F(StartTest, StartsADeviceWhoseChannelQueriesFailWithCountsOfZero) {
  for (const auto scope : {kAudioObjectPropertyScopeInput, kAudioObjectPropertyScopeOutput}) {
    hal_.failProperty(HalCall::getPropertyDataSize, 7, kAudioDevicePropertyStreamConfiguration, scope,
                      kAudioHardwareUnknownPropertyError);
  }
  const std::vector<PatchConnection> routes = {{0, 0, 1.0F, true}};
  ASSERT_EQ(engine_.start(7, routes), std::nullopt);
  EXPECT_TRUE(engine_.isRunning());
  EXPECT_EQ(engine_.contextPtr()->inputChannelCount, 0);
  EXPECT_EQ(engine_.contextPtr()->outputChannelCount, 0);
  BufferList input;
  BufferList output;
  input.add(2, 3, 1.0F);
  output.add(2, 3, 9.0F);
  ASSERT_TRUE(hal_.runCycle(input.get(), output.get()));
  EXPECT_THAT(output.copyOf(0), Each(9.0F)) << "the outputs stay as the device passed them";
}

TEST_F(StartTest, ChannelCountBeyond32BitsEndsTheProcess) {
  hal_.devices[0].inputStreams = {0x7FFFFFFF, 1};
  EXPECT_DEATH((void)engine_.start(7, {}),
               "tolvane: fatal: input channel count of the device is beyond 32 bits");
  hal_.devices[0].inputStreams = {2};
  hal_.devices[0].outputStreams = {0xFFFFFFFF, 0xFFFFFFFF};
  EXPECT_DEATH((void)engine_.start(7, {}),
               "tolvane: fatal: output channel count of the device is beyond 32 bits");
}

TEST_F(StartTest, LargestChannelCountOf32BitsIsKept) {
  hal_.devices[0].inputStreams = {0x7FFFFFFE, 1};
  ASSERT_EQ(engine_.start(7, {}), std::nullopt);
  EXPECT_EQ(engine_.contextPtr()->inputChannelCount, 2147483647);
}

TEST(SharedEngine, IsOneIdleObject) {
  CoreAudioEngine& shared = CoreAudioEngine::shared();
  EXPECT_EQ(&shared, &CoreAudioEngine::shared());
  EXPECT_FALSE(shared.isRunning());
  EXPECT_EQ(shared.contextPtr(), nullptr);
  EXPECT_EQ(shared.procID(), nullptr);
  EXPECT_EQ(shared.currentDeviceID(), 0U);
}

}  // namespace
}  // namespace tolvane::test
