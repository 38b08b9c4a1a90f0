#include <QApplication>
#include <QHelpEvent>
#include <QTest>
#include <QToolTip>

#include <gtest/gtest.h>

#include "matrix/patch_matrix_canvas.h"

namespace tolvane {
namespace {

void restAt(PatchMatrixCanvas& canvas, const QPoint& point) {
  QHelpEvent event(QEvent::ToolTip, point, canvas.mapToGlobal(point));
  QApplication::sendEvent(&canvas, &event);
}

TEST(CanvasToolTip, NamesTheCellUnderThePointerFromOne) {
  PatchMatrixCanvas canvas(QRect(0, 0, 1024, 1024));
  canvas.show();
  restAt(canvas, {6 * 16 + 3, 2 * 16 + 9});
  EXPECT_EQ(QToolTip::text(), QStringLiteral("In 3 → Out 7"));
  EXPECT_TRUE(QToolTip::isVisible());
  restAt(canvas, {0, 0});
  EXPECT_EQ(QToolTip::text(), QStringLiteral("In 1 → Out 1"));
}

TEST(CanvasToolTip, IsSilentBesideTheGrid) {
  PatchMatrixCanvas canvas(QRect(0, 0, 100, 100));
  canvas.inputCount = 2;
  canvas.outputCount = 2;
  canvas.show();
  restAt(canvas, {8, 8});
  restAt(canvas, {40, 8});
  EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
}

}  // namespace
}  // namespace tolvane
