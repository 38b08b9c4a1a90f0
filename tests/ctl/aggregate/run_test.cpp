// tolvanectl run on an aggregate, with members that come and go.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/aggregate/fixture.h"
#include "hal/pipewire/patch_rig.h"

namespace tolvane::test {
namespace {

using testing::HasSubstr;

const PipeWireCard kFirstCard{.name = "first", .inputs = 4, .outputs = 2, .cardId = 901};
const PipeWireCard kSecondCard{.name = "second", .inputs = 2, .outputs = 3, .cardId = 902};

TEST_F(AggregateTest, RoutesAcrossItsMembersAndGoesOnWithoutOne) {
  const TemporaryFolder temporary;
  const std::vector<PatchConnection> routes{{4, 0, 1.0F, true}, {3, 2, 1.0F, true}, {5, 4, 1.0F, true}};
  writePatch(temporary / "patch.json", routes);
  ASSERT_EQ(run({"create", "Stage", "First Card", "Second Card"}).status, 0);
  ChildProcess program({"run", "--patch", temporary / "patch.json", "--device", "Stage"});
  PatchRig rig({kFirstCard, kSecondCard}, routes);
  EXPECT_TRUE(rig.settle());
  PipeWireClient hardware;
  hardware.removeCard(kFirstCard);
  EXPECT_TRUE(eventually([&] {
    rig.recorder().reset();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const ReceivedSignal second = rig.recorder().received()[4];
    return second.frames != 0 && second.rightFrames == second.frames;
  }));
  hardware.addCard(kFirstCard);
  rig.linkCard(0);
  EXPECT_TRUE(rig.settle());
  program.send(SIGINT);
  const Finished finished = program.finish();
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.err, testing::Not(HasSubstr("is gone")));
}

}  // namespace
}  // namespace tolvane::test
