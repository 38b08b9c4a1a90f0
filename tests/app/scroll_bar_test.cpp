// The matrix's floating scroll bars under a real pointer that enters and leaves the window.
#include <QCursor>
#include <QScrollBar>
#include <QTest>

#include "app/window_fixture.h"
#include "matrix/overlay_scroll_view.h"

namespace tolvane::test {
namespace {

class ScrollBarTest : public WindowTest {
 protected:
  ScrollBarTest() {
    hal.devices = {scriptedDevice(7, "Stage Box", {64}, {64})};
    QCursor::setPos(beside_);
    openQuietly();
  }

  [[nodiscard]] QImage picture() const { return matrix().grab().toImage(); }
  [[nodiscard]] PatchMatrixView& matrix() const { return control<PatchMatrixView>("patchMatrixView"); }

  const QPoint beside_{100, 780};  // on the screen, below the window
};

TEST_F(ScrollBarTest, AKnobComesToRestAfterAFastExitOfThePointer) {
  const QImage atRest = picture();
  const QScrollBar& down = *matrix().scrollView->verticalScrollBar();
  ASSERT_GT(down.maximum(), 0);
  // The pointer jumps onto the knob, then straight out of the window.
  QCursor::setPos(matrix().scrollView->mapToGlobal(QPoint(534, 20)));
  ASSERT_TRUE(QTest::qWaitFor([&] { return picture() != atRest; }, 20000));
  QCursor::setPos(beside_);
  EXPECT_TRUE(QTest::qWaitFor([&] { return picture() == atRest; }, 20000));
}

}  // namespace
}  // namespace tolvane::test
