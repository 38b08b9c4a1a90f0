// Routes published while the engine runs are heard in the next cycle, without a restart.
#include "engine_fixture.h"
#include "support/buffer_list.h"

namespace tolvane::test {
namespace {

using testing::Each;
using testing::IsEmpty;

class LiveUpdateTest : public EngineTest {
 protected:
  LiveUpdateTest() {
    input_.add(2, 4);
    for (std::size_t s = 0; s < 8; ++s) input_.samples(0)[s] = s % 2 == 0 ? 1.0F : 10.0F;
    output_.add(2, 4, 9.0F);
  }

  void cycle() { ASSERT_TRUE(hal_.runCycle(input_.get(), output_.get())); }

  BufferList input_;
  BufferList output_;
};

TEST_F(LiveUpdateTest, IsHeardInTheNextCycleWithoutAnyCallToTheHal) {
  const std::vector<PatchConnection> first = {{0, 0, 1.0F, true}};
  const std::vector<PatchConnection> second = {{1, 1, 0.5F, true}};
  ASSERT_EQ(engine_.start(7, first), std::nullopt);
  cycle();
  EXPECT_THAT(output_.channel(0, 0), Each(1.0F));
  EXPECT_THAT(output_.channel(0, 1), Each(0.0F));

  hal_.takeCalls();
  engine_.writeConnections(engine_.contextPtr(), second);
  cycle();
  EXPECT_THAT(output_.channel(0, 0), Each(0.0F));
  EXPECT_THAT(output_.channel(0, 1), Each(5.0F));
  EXPECT_THAT(hal_.calls(), IsEmpty());
}

TEST_F(LiveUpdateTest, OfAnEmptyListSilencesTheNextCycle) {
  const std::vector<PatchConnection> routes = {{0, 0, 1.0F, true}, {1, 1, 1.0F, true}};
  ASSERT_EQ(engine_.start(7, routes), std::nullopt);
  engine_.writeConnections(engine_.contextPtr(), {});
  cycle();
  EXPECT_THAT(output_.copyOf(0), Each(0.0F));
}

}  // namespace
}  // namespace tolvane::test
