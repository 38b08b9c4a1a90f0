// What depends on the version of the client library.
#include "hal/pipewire/library.h"

#include <gtest/gtest.h>

namespace tolvane::test {
namespace {

using hal::pipewire::realTimeConfigName;

TEST(PipeWireLibrary, TheRealTimeConfigurationIsThatOfItsVersion) {
  EXPECT_STREQ(realTimeConfigName("0.3.65"), "client-rt.conf");
  EXPECT_STREQ(realTimeConfigName("1.0.5"), "client-rt.conf");
  EXPECT_STREQ(realTimeConfigName("1.2.7"), "client-rt.conf");
  EXPECT_STREQ(realTimeConfigName("1.4.0"), "client.conf");
  EXPECT_STREQ(realTimeConfigName("1.4.2"), "client.conf");
  EXPECT_STREQ(realTimeConfigName("1.10.0"), "client.conf");
  EXPECT_STREQ(realTimeConfigName("2.0.0"), "client.conf");
}

TEST(PipeWireLibrary, VersionsAreComparedNumberByNumber) {
  using hal::pipewire::isSince;
  EXPECT_TRUE(isSince("0.3.65", 0, 3, 65));
  EXPECT_TRUE(isSince("0.3.100", 0, 3, 65));
  EXPECT_TRUE(isSince("1.0.0", 0, 3, 65));
  EXPECT_FALSE(isSince("0.3.64", 0, 3, 65));
  EXPECT_FALSE(isSince("0.3", 0, 3, 65));
  EXPECT_FALSE(isSince("", 0, 3, 65));
}

TEST(PipeWireLibrary, AUsableOneIsNoProblem) {
  EXPECT_EQ(hal::pipewire::libraryProblem(), "");
}

}  // namespace
}  // namespace tolvane::test
