// A PipeWire that is too old gets a sentence.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"

namespace tolvane::test {
namespace {

TEST(OldPipeWire, IsSaidOnceAndCostsNoOtherDevice) {
  ChildProcess::Options options;
  options.environment["LD_LIBRARY_PATH"] = TOLVANE_OLD_PIPEWIRE_FOLDER;
  const Finished devices = runProgram({"devices"}, options);
  EXPECT_EQ(devices.status, 0);
  EXPECT_EQ(devices.err, "tolvanectl: PipeWire 0.3.40 is too old to be used: 0.3.65 or later is needed\n");
  EXPECT_THAT(devices.out, testing::HasSubstr("Tolvane Virtual Device"));
}

}  // namespace
}  // namespace tolvane::test
