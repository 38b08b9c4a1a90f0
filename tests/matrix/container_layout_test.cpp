#include <QLabel>

#include <gtest/gtest.h>

#include "matrix/lower_left.h"
#include "matrix/overlay_scroll_view.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_col_header.h"
#include "matrix/patch_matrix_row_header.h"
#include "matrix/patch_matrix_view.h"
#include "support/qt_pixels.h"

namespace tolvane {
namespace {

// The child's frame, measured from the container's lower left corner.
QRect frameOf(const QWidget& child) {
  return fromLowerLeft(child.geometry(), child.parentWidget()->height());
}

QLabel& caption(const PatchMatrixView& view, const QString& text) {
  for (QLabel* label : view.findChildren<QLabel*>()) {
    if (label->text() == text) {
      return *label;
    }
  }
  throw std::runtime_error("no such caption");
}

TEST(ContainerLayout, IsBuiltByItsFrame) {
  const PatchMatrixView view(QRect(18, 112, 576, 298));
  EXPECT_EQ(frameOf(*view.scrollView), QRect(38, 0, 538, 260));
  EXPECT_EQ(frameOf(*view.colHeader), QRect(38, 260, 538, 38));
  EXPECT_EQ(frameOf(*view.rowHeader), QRect(0, 0, 38, 260));
  EXPECT_EQ(frameOf(caption(view, QStringLiteral("IN↓"))), QRect(1, 261, 36, 18));
  EXPECT_EQ(frameOf(caption(view, QStringLiteral("OUT→"))), QRect(1, 279, 36, 18));
}

TEST(ContainerLayout, CaptionsAreSmallBoldGreyAndAtTheRight) {
  const PatchMatrixView view(QRect(0, 0, 576, 298));
  for (const QString& text : {QStringLiteral("IN↓"), QStringLiteral("OUT→")}) {
    const QLabel& label = caption(view, text);
    EXPECT_EQ(label.font().pixelSize(), 7);
    EXPECT_TRUE(label.font().bold());
    EXPECT_TRUE(label.alignment().testFlag(Qt::AlignRight));
    EXPECT_EQ(label.palette().color(QPalette::WindowText), QColor(97, 97, 97));
  }
}

TEST(ContainerLayout, PartsHaveTheirGreys) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  const QImage picture = grabbed(view);
  EXPECT_EQ(greyAt(picture, 3, 18), 28) << "the corner";
  EXPECT_EQ(greyAt(picture, 3, 200), 28) << "the row strip";
  EXPECT_EQ(greyAt(picture, 300, 4), 28) << "the column strip";
  EXPECT_EQ(greyAt(picture, 38 + 8, 38 + 8), 66) << "the grid";
}

TEST(ContainerLayout, AGrowingContainerPlacesTheScrollingPartsAndLeavesTheCorner) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.show();
  view.resize(700, 400);
  EXPECT_EQ(frameOf(*view.scrollView), QRect(38, 0, 662, 362));
  EXPECT_EQ(frameOf(*view.colHeader), QRect(38, 362, 662, 38));
  EXPECT_EQ(frameOf(*view.rowHeader), QRect(0, 0, 38, 362));
  EXPECT_EQ(frameOf(caption(view, QStringLiteral("IN↓"))), QRect(1, 261, 36, 18));
  EXPECT_EQ(frameOf(caption(view, QStringLiteral("OUT→"))), QRect(1, 279, 36, 18));
  EXPECT_EQ(view.scrollView->viewport()->size(), QSize(662, 362));
  EXPECT_EQ(greyAt(grabbed(view), 3, 3), 33) << "the container itself, where the corner has been";
}

TEST(ContainerLayout, AShrinkingContainerKeepsTheScrollPositionWithinReach) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.configure(20, 40, {});
  view.show();
  view.scrollView->scrollTo({102, 60});
  ASSERT_EQ(view.scrollView->contentOrigin(), QPoint(102, 60));
  view.resize(38 + 600, 38 + 300);
  EXPECT_EQ(view.scrollView->contentOrigin(), QPoint(40, 20));
  EXPECT_EQ(view.colHeader->scrollOffset, 40.0);
  EXPECT_EQ(view.rowHeader->scrollOffset, 20.0);
}

TEST(ContainerLayout, AContainerSmallerThanItsStripsHasNoGridLeft) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  view.show();
  view.resize(20, 10);
  EXPECT_EQ(view.scrollView->size(), QSize(0, 0));
  EXPECT_EQ(view.colHeader->width(), 0);
  EXPECT_EQ(view.rowHeader->height(), 0);
}

TEST(ContainerLayout, PartsAreBuiltOnceAndStay) {
  PatchMatrixView view(QRect(0, 0, 576, 298));
  const auto* canvas = view.canvas;
  const auto* scrollView = view.scrollView;
  view.configure(4, 4, {});
  view.resize(300, 300);
  EXPECT_EQ(view.canvas, canvas);
  EXPECT_EQ(view.scrollView, scrollView);
  EXPECT_EQ(view.findChildren<PatchMatrixCanvas*>().size(), 1);
}

}  // namespace
}  // namespace tolvane
