// The server's cycle length, set by the driver.
#include "hal/jack/jack_fixture.h"

namespace tolvane::test {
namespace {

class JackBufferFrames : public JackFixture {
 protected:
  JackBufferFrames() { startServer(256); }
};

TEST_F(JackBufferFrames, HaveARange) {
  const hal::DeviceInfo system = device("system");
  EXPECT_EQ(system.bufferFrames, 256U);
  EXPECT_EQ(system.minBufferFrames, 16U);
  EXPECT_EQ(system.maxBufferFrames, 4096U);
}

TEST_F(JackBufferFrames, AreReadAsTheyWereSet) {
  for (const std::uint32_t frames : {64U, 1024U, 2048U, 256U}) {
    EXPECT_EQ(driver_->setBufferFrames(device("system"), frames), noErr);
    const auto list = devices();  // must not be an old answer
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].bufferFrames, frames);
  }
}

TEST_F(JackBufferFrames, ChangeUnderASession) {
  JackSessionClient client(2, 2, straightRoutes(2));
  auto session = start("system", client);
  ASSERT_TRUE(eventually([&] { return client.cycles > 2; }));
  EXPECT_EQ(driver_->setBufferFrames(device("system"), 512), noErr);
  EXPECT_TRUE(eventually([&] { return client.bufferFrames == 512U; }));
  const std::uint64_t before = client.cycles;
  EXPECT_TRUE(eventually([&] { return client.cycles > before + 5; }));
  session.reset();
  EXPECT_EQ(client.outputBuffers.at(0).mDataByteSize, 512 * sizeof(float));
}

TEST_F(JackBufferFrames, OutOfWhatTheServerTakesAreRefused) {
  EXPECT_EQ(driver_->setBufferFrames(device("system"), 16384),
            OSStatus{kAudioHardwareUnsupportedOperationError});
  EXPECT_EQ(device("system").bufferFrames, 256U);
}

TEST_F(JackBufferFrames, OfAServerThatIsGoneAreNotReady) {
  const hal::DeviceInfo system = device("system");
  server_->kill();
  EXPECT_EQ(driver_->setBufferFrames(system, 512), OSStatus{kAudioHardwareNotReadyError});
}

TEST_F(JackBufferFrames, OfAHungServerAreNotReadyInTimeAndStayAsTheyAre) {
  const hal::DeviceInfo system = device("system");
  server_->pause();
  const auto driver = hal::makeJackDriver();
  EXPECT_TRUE(endsWithin(450ms, [&] {
    EXPECT_EQ(driver->setBufferFrames(system, 512), OSStatus{kAudioHardwareNotReadyError});
  }));
  server_->resume();
  EXPECT_EQ(device("system").bufferFrames, 256U);
}

}  // namespace
}  // namespace tolvane::test
