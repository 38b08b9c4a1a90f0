// What is on the screen after a partial repaint, at scales where a point is not a whole number of pixels.
#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QTest>
#include <cmath>

#include <gtest/gtest.h>

#include "matrix/cell_painter.h"
#include "matrix/overlay_scroll_view.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_view.h"
#include "support/qt_events.h"
#include "support/qt_pixels.h"

namespace tolvane {
namespace {

// The matrix at its place in the window: its grid starts half a pixel off at 125 % and 175 %.
class FractionalScale : public ::testing::Test {
 protected:
  FractionalScale() : matrix_(*new PatchMatrixView(QRect(18, 112, 576, 298), &window_)) {
    window_.resize(1300, 900);
    matrix_.configure(40, 40, {{2, 6, 1.0F, true}, {3, 3, 1.0F, true}});
    EXPECT_TRUE(showActive(window_));
    matrix_.canvas->setFocus(Qt::OtherFocusReason);
    onScreen();
  }

  QImage onScreen() {
    // Paints pending updates now instead of a moment later.
    QEvent due(QEvent::UpdateRequest);
    QApplication::sendEvent(&window_, &due);
    // Here the platform treats points as pixels. So the window is large enough for the matrix at twice its
    // size.
    return window_.screen()->grabWindow(window_.winId()).toImage().convertToFormat(QImage::Format_RGB32);
  }
  // The same after a full repaint.
  [[nodiscard]] QImage repaintedWhole() {
    for (QWidget* part : window_.findChildren<QWidget*>()) {
      part->update();
    }
    return onScreen();
  }
  void press(Qt::Key key) { QTest::keyClick(window_.windowHandle(), key); }

  QWidget window_;
  PatchMatrixView& matrix_;
};

TEST_F(FractionalScale, TheFocusRingLeavesNothingBehind) {
  for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Right, Qt::Key_Right, Qt::Key_Up,
                            Qt::Key_Left, Qt::Key_Down, Qt::Key_Down, Qt::Key_Right}) {
    press(key);
    const QImage after = onScreen();
    ASSERT_EQ(firstDifference(after, repaintedWhole()).toStdString(), "") << key;
  }
}

TEST_F(FractionalScale, TheFocusRingGoesWhenTheFocusGoes) {
  const QImage before = onScreen();
  press(Qt::Key_Down);
  ASSERT_NE(firstDifference(onScreen(), before).toStdString(), "");
  matrix_.canvas->clearFocus();
  EXPECT_EQ(firstDifference(onScreen(), before).toStdString(), "");
}

TEST_F(FractionalScale, ScrollingLeavesTheSamePixelsAsPaintingAnew) {
  for (const QPoint origin : {QPoint(1, 1), QPoint(5, 3), QPoint(9, 35), QPoint(7, 32), QPoint(0, 1)}) {
    matrix_.scrollView->scrollTo(origin);
    const QImage after = onScreen();
    ASSERT_EQ(firstDifference(after, repaintedWhole()).toStdString(), "") << origin.x() << ", " << origin.y();
  }
}

// Cells that are a whole number of pixels wide are copied from one picture. The copy is exact and fast only
// on whole pixels.
TEST_F(FractionalScale, CellsThatAreWholePixelsWideStandOnWholePixels) {
  const double scale = window_.devicePixelRatioF();
  if (16.0 * scale != std::floor(16.0 * scale)) {
    return;
  }
  const QSize cells(160, 160);
  QImage expected(cells * scale, QImage::Format_RGB32);
  expected.setDevicePixelRatio(scale);
  QPainter painter(&expected);
  CellPainter cell(painter, 16.0);
  cell.paintBackground(QRectF(QPointF(), cells));
  cell.paintGrid(QRectF(QPointF(), cells), {0, 10}, {0, 10});
  for (int row = 0; row < 10; ++row) {
    for (int column = 0; column < 10; ++column) {
      const CellLook still = row == column ? CellLook::diagonal : CellLook::offDiagonal;
      cell.paintCell({16.0 * column, 16.0 * row},
                     matrix_.canvas->isActive({row, column}) ? CellLook::active : still);
    }
  }
  painter.end();
  const QPoint corner(static_cast<int>(std::floor(56.0 * scale + 0.5)),
                      static_cast<int>(std::floor(150.0 * scale + 0.5)));
  EXPECT_EQ(firstDifference(onScreen().copy(QRect(corner, expected.size())), expected).toStdString(), "");
}

}  // namespace
}  // namespace tolvane
