#include <QFocusEvent>
#include <QTest>

#include <gmock/gmock.h>

#include "matrix/overlay_scroll_view.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_view.h"
#include "support/qt_events.h"
#include "support/qt_pixels.h"

namespace tolvane {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

// 128 × 128 cells; the view shows 30 × 10 of them.
class CanvasKeys : public ::testing::Test {
 protected:
  CanvasKeys() : view_(QRect(0, 0, 38 + 30 * 16, 38 + 10 * 16)), canvas_(*view_.canvas) {
    view_.configure(128, 128, {});
    view_.onConnectionToggled = [this](std::int64_t input, std::int64_t output) {
      toggled_.emplace_back(input, output);
    };
    EXPECT_TRUE(showActive(view_));
    canvas_.clearFocus();
    canvas_.setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(canvas_.hasFocus());
  }

  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(view_.windowHandle(), key, modifiers);
  }

  PatchMatrixView view_;
  PatchMatrixCanvas& canvas_;
  std::vector<std::pair<std::int64_t, std::int64_t>> toggled_;
};

TEST_F(CanvasKeys, ArrowsMoveTheFocusCellAndStopAtTheEdges) {
  press(Qt::Key_Left);
  press(Qt::Key_Up);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{0, 0}));
  press(Qt::Key_Right);
  press(Qt::Key_Right);
  press(Qt::Key_Down);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{1, 2}));
  press(Qt::Key_Left);
  press(Qt::Key_Up);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{0, 1}));
  press(Qt::Key_End, Qt::ControlModifier);
  press(Qt::Key_Right);
  press(Qt::Key_Down);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{127, 127}));
}

TEST_F(CanvasKeys, HomeAndEndGoAlongTheRowAndWithControlToTheCorners) {
  press(Qt::Key_Down);
  press(Qt::Key_End);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{1, 127}));
  press(Qt::Key_Home);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{1, 0}));
  press(Qt::Key_End, Qt::ControlModifier);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{127, 127}));
  press(Qt::Key_Home, Qt::ControlModifier);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{0, 0}));
}

TEST_F(CanvasKeys, PageKeysMoveByTheRowsInView) {
  press(Qt::Key_PageDown);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{10, 0}));
  press(Qt::Key_PageDown);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{20, 0}));
  press(Qt::Key_PageUp);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{10, 0}));
}

TEST_F(CanvasKeys, TheFocusCellScrollsIntoViewByAsLittleAsNeeded) {
  for (int step = 0; step < 9; ++step) {
    press(Qt::Key_Down);
  }
  EXPECT_EQ(view_.scrollView->contentOrigin(), QPoint(0, 0));
  press(Qt::Key_Down);
  EXPECT_EQ(view_.scrollView->contentOrigin(), QPoint(0, 16));
  press(Qt::Key_End);
  EXPECT_EQ(view_.scrollView->contentOrigin(), QPoint((128 - 30) * 16, 16));
  press(Qt::Key_Home, Qt::ControlModifier);
  EXPECT_EQ(view_.scrollView->contentOrigin(), QPoint(0, 0));
}

TEST_F(CanvasKeys, SpaceReturnAndEnterToggleTheFocusCell) {
  press(Qt::Key_Right);
  press(Qt::Key_Space);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  press(Qt::Key_Enter);
  EXPECT_THAT(toggled_, ElementsAre(Pair(0, 1), Pair(1, 1), Pair(1, 1)));
}

TEST_F(CanvasKeys, AHeldKeyTogglesOnce) {
  QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "), true);
  press(Qt::Key_Space);
  QApplication::sendEvent(&canvas_, &held);
  QApplication::sendEvent(&canvas_, &held);
  EXPECT_THAT(toggled_, ElementsAre(Pair(0, 0)));
}

TEST_F(CanvasKeys, OtherKeysAreLeftToTheWindow) {
  QKeyEvent other(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
  canvas_.window()->setAttribute(Qt::WA_NoMousePropagation);
  QApplication::sendEvent(&canvas_, &other);
  EXPECT_FALSE(other.isAccepted());
  EXPECT_TRUE(toggled_.empty());
}

TEST_F(CanvasKeys, TheFocusCellStaysWithinAShrunkenGrid) {
  press(Qt::Key_End, Qt::ControlModifier);
  view_.configure(4, 2, {});
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{3, 1}));
  press(Qt::Key_Space);
  EXPECT_THAT(toggled_, ElementsAre(Pair(3, 1)));
}

TEST_F(CanvasKeys, KeysGoOnFromTheCellThatWasClicked) {
  clickThroughWindow(canvas_, {5 * 16 + 8, 3 * 16 + 8});
  press(Qt::Key_Right);
  EXPECT_EQ(canvas_.focusCell(), (MatrixCell{3, 6}));
}

TEST_F(CanvasKeys, TheRingIsSeenWhenFocusCameByKeyAndGoesWithIt) {
  const QPoint edge(1, 8);
  const QRgb ringed = pixelAt(grabbed(canvas_), edge.x(), edge.y());
  EXPECT_EQ(ringed, 0x66B3FFU) << std::hex << ringed;
  canvas_.clearFocus();
  const QRgb plain = pixelAt(grabbed(canvas_), edge.x(), edge.y());
  EXPECT_EQ(qRed(plain), qBlue(plain));
  canvas_.setFocus(Qt::MouseFocusReason);
  EXPECT_EQ(pixelAt(grabbed(canvas_), edge.x(), edge.y()), plain);
  press(Qt::Key_Up);
  EXPECT_EQ(pixelAt(grabbed(canvas_), edge.x(), edge.y()), ringed);
}

TEST_F(CanvasKeys, AClickHidesTheRing) {
  press(Qt::Key_Right);
  clickThroughWindow(canvas_, {8, 8});
  const QImage picture = grabbed(canvas_);
  for (const double x : {1.0, 17.0}) {
    EXPECT_EQ(qRed(pixelAt(picture, x, 8)), qBlue(pixelAt(picture, x, 8))) << x;
  }
}

}  // namespace
}  // namespace tolvane
