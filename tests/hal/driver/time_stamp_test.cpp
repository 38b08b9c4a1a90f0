#include "hal/driver/time_stamp.h"

#include <gtest/gtest.h>

namespace tolvane::hal {
namespace {

TEST(TimeStamp, HasBothTimesAndSaysSo) {
  const AudioTimeStamp stamp = timeStamp(-256.0, 123'456'789);
  EXPECT_EQ(stamp.mSampleTime, -256.0);
  EXPECT_EQ(stamp.mHostTime, 123'456'789U);
  EXPECT_EQ(stamp.mFlags, kAudioTimeStampSampleTimeValid | kAudioTimeStampHostTimeValid);
}

}  // namespace
}  // namespace tolvane::hal
