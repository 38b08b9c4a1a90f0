#include "app/window_fixture.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class MatrixToggleTest : public WindowTest {
 protected:
  MatrixToggleTest() { openQuietly(); }

  [[nodiscard]] const RouteKeys& lit() const {
    return control<PatchMatrixView>("patchMatrixView").connections;
  }
};

TEST_F(MatrixToggleTest, AClickAddsAndASecondRemoves) {
  clickCell(2, 3);
  EXPECT_THAT(routes(), ElementsAre(plainRoute(2, 3)));
  EXPECT_THAT(lit(), ElementsAre("2,3"));
  EXPECT_THAT(statusTexts(), ElementsAre("1 connection(s) configured — press Start to route."));
  clickCell(2, 3);
  EXPECT_THAT(routes(), IsEmpty());
  EXPECT_THAT(lit(), IsEmpty());
  EXPECT_THAT(statusTexts(), ElementsAre("0 connection(s) configured — press Start to route."));
}

TEST_F(MatrixToggleTest, RowsAreInputsAndColumnsAreOutputs) {
  clickCell(17, 0);
  clickCell(0, 10);
  EXPECT_THAT(routes(), ElementsAre(plainRoute(17, 0), plainRoute(0, 10)));
}

TEST_F(MatrixToggleTest, ALitCellOfAnotherGainGetsAPlainRouteBesideIt) {
  addRoute("3", "4", "0.5");
  clickCell(2, 3);
  EXPECT_THAT(routes(), ElementsAre(PatchConnection{2, 3, 0.5F, true}, plainRoute(2, 3)));
  EXPECT_THAT(lit(), ElementsAre("2,3"));
  clickCell(2, 3);
  EXPECT_THAT(routes(), ElementsAre(PatchConnection{2, 3, 0.5F, true}));
  EXPECT_THAT(lit(), ElementsAre("2,3"));
}

TEST_F(MatrixToggleTest, OnlyTheRouteOfTheCellGoes) {
  for (const int channel : {1, 2, 3}) clickCell(channel, channel);
  clickCell(2, 2);
  EXPECT_THAT(routes(), ElementsAre(plainRoute(1, 1), plainRoute(3, 3)));
  EXPECT_THAT(lit(), UnorderedElementsAre("1,1", "3,3"));
}

TEST_F(MatrixToggleTest, ACallAfterTheControllerIsGoneDoesNothing) {
  const auto handler = control<PatchMatrixView>("patchMatrixView").onConnectionToggled;
  ASSERT_TRUE(handler);
  handler(4, 5);
  EXPECT_THAT(routes(), ElementsAre(plainRoute(4, 5)));
  trace.reset();
  controller.reset();
  handler(4, 5);
  SUCCEED();
}

}  // namespace
}  // namespace tolvane::test
