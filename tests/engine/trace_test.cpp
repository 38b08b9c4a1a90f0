// The lines that a start writes to standard output.
#include <cinttypes>
#include <cstdio>

#include "engine_fixture.h"
#include "support/captured_output.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

class TraceTest : public EngineTest {
 protected:
  std::vector<std::string> linesOfStart(AudioDeviceID device) {
    return outputLinesOf([this, device] { (void)engine_.start(device, {}); });
  }
};

constexpr auto kContextLine = R"(\[Engine\] context size=1556 ptr=0x[0-9a-f]{16})";

TEST_F(TraceTest, OfASuccess) {
  EXPECT_THAT(linesOfStart(9),
              ElementsAre("[Engine] id=9 in=10 out=4",           //
                          MatchesRegex(kContextLine),            //
                          "[Engine] CreateIOProcID status=0",    //
                          "[Engine] AudioDeviceStart...",        //
                          "[Engine] AudioDeviceStart status=0",  //
                          "[Engine] Running ✓"));
}

TEST_F(TraceTest, NamesTheContextsAddress) {
  const std::vector<std::string> lines = linesOfStart(9);
  std::array<char, 64> address{};
  std::snprintf(address.data(), address.size(), "ptr=0x%016" PRIxPTR,
                reinterpret_cast<std::uintptr_t>(engine_.contextPtr()));
  ASSERT_GT(lines.size(), 1U);
  EXPECT_THAT(lines[1], testing::EndsWith(address.data()));
}

TEST_F(TraceTest, OfARefusedRegistrationHasThreeLines) {
  hal_.answerNext(HalCall::createIOProcID, 1852797029);
  EXPECT_THAT(linesOfStart(7), ElementsAre("[Engine] id=7 in=2 out=2", MatchesRegex(kContextLine),
                                           "[Engine] CreateIOProcID status=1852797029"));
}

TEST_F(TraceTest, OfARegistrationWithoutIdentifierHasThreeLines) {
  hal_.withholdNextProcID();
  EXPECT_THAT(linesOfStart(7), ElementsAre("[Engine] id=7 in=2 out=2", MatchesRegex(kContextLine),
                                           "[Engine] CreateIOProcID status=0"));
}

TEST_F(TraceTest, OfARefusedDeviceStartHasFiveLines) {
  hal_.answerNext(HalCall::start, -50);
  EXPECT_THAT(linesOfStart(7), ElementsAre("[Engine] id=7 in=2 out=2",          //
                                           MatchesRegex(kContextLine),          //
                                           "[Engine] CreateIOProcID status=0",  //
                                           "[Engine] AudioDeviceStart...",      //
                                           "[Engine] AudioDeviceStart status=-50"));
}

TEST_F(TraceTest, PrintsLargeIdentifiersAsTheyAre) {
  hal_.devices.push_back({.id = 4294967295U, .name = "Last", .inputStreams = {1}});
  const std::vector<std::string> lines = linesOfStart(4294967295U);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines[0], "[Engine] id=4294967295 in=1 out=0");
}

TEST_F(TraceTest, OfARestartIsThatOfAStart) {
  linesOfStart(7);
  EXPECT_THAT(linesOfStart(7),
              ElementsAre("[Engine] id=7 in=2 out=2",            //
                          MatchesRegex(kContextLine),            //
                          "[Engine] CreateIOProcID status=0",    //
                          "[Engine] AudioDeviceStart...",        //
                          "[Engine] AudioDeviceStart status=0",  //
                          "[Engine] Running ✓"));
}

}  // namespace
}  // namespace tolvane::test
