// tolvanectl soak on a null card of a PipeWire server, whose outputs are linked to its inputs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/support/child_process.h"
#include "ctl/support/files.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;

TEST(SoakOnPipeWire, EverySampleComesBack) {
  const PipeWireServer server({{.name = "Card", .inputs = 4, .outputs = 4, .cardId = 76}},
                              PipeWirePace::patient);
  PipeWireClient user;
  for (unsigned n = 0; n < 3; ++n) user.link({"Card.sink", false, n}, {"Card.source", true, n});
  const Finished soak =
      runProgram({"soak", "--device", "Card", "--minutes", "0.1", "--edits-per-minute", "60000"});
  EXPECT_EQ(soak.status, 0) << soak.err;
  EXPECT_THAT(soak.out, HasSubstr("right, 0 wrong, 0 missing"));
  EXPECT_THAT(soak.out, HasSubstr("3 inputs, after "));
  EXPECT_THAT(soak.out, HasSubstr("broken 0 times"));
}

TEST(SoakOnPipeWire, HasNoFullSpeed) {
  const PipeWireServer server({{.name = "Card", .inputs = 4, .outputs = 4, .cardId = 76}});
  const Finished soak = runProgram({"soak", "--device", "Card", "--full-speed"});
  EXPECT_EQ(soak.status, 1);
  EXPECT_EQ(soak.err, "tolvanectl: Card: has no full speed; the virtual device has\n");
}

}  // namespace
}  // namespace tolvane::test
