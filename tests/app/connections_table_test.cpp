#include <QFontMetricsF>
#include <QHeaderView>
#include <QScrollBar>
#include <QTest>
#include <QWindow>
#include <algorithm>
#include <cmath>
#include <limits>

#include "app/window_fixture.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string textOf(const PatchConnection& route, const char* identifier) {
  return connectionsCell(route, QString::fromLatin1(identifier)).text.toStdString();
}

TEST(ConnectionsCell, ShowsARouteOneBased) {
  const PatchConnection route{0, 5, 0.5F, true};
  EXPECT_EQ(textOf(route, "input"), "Ch 1");
  EXPECT_EQ(textOf(route, "output"), "Ch 6");
  EXPECT_EQ(textOf(route, "gain"), "0.50");
  EXPECT_EQ(textOf(route, "active"), "✓");
}

TEST(ConnectionsCell, ShowsGainsWithTwoDecimals) {
  EXPECT_EQ(textOf({0, 0, 2.0F, true}, "gain"), "2.00");
  EXPECT_EQ(textOf({0, 0, -1.0F, true}, "gain"), "-1.00");
  EXPECT_EQ(textOf({0, 0, std::numeric_limits<float>::infinity(), true}, "gain"), "inf");
  EXPECT_EQ(textOf({0, 0, std::nanf(""), true}, "gain"), "nan");
}

TEST(ConnectionsCell, DimsAnInactiveRouteInEveryColumn) {
  for (const char* const identifier : {"input", "output", "gain", "active"}) {
    EXPECT_EQ(connectionsCell({0, 0, 1.0F, true}, QString::fromLatin1(identifier)).color,
              QColor(255, 255, 255));
    EXPECT_EQ(connectionsCell({0, 0, 1.0F, false}, QString::fromLatin1(identifier)).color,
              QColor(115, 115, 115));
  }
  EXPECT_EQ(textOf({0, 0, 1.0F, false}, "active"), "○");
}

TEST(ConnectionsCell, ShowsAnyChannelThatAFileCanHold) {
  EXPECT_EQ(textOf({-1, 0, 1.0F, true}, "input"), "Ch 0");
  EXPECT_EQ(textOf({-3, 0, 1.0F, true}, "input"), "Ch -2");
  EXPECT_EQ(textOf({std::numeric_limits<std::int64_t>::max(), 0, 1.0F, true}, "input"),
            "Ch 9223372036854775808");
  EXPECT_EQ(textOf({0, std::numeric_limits<std::int64_t>::min(), 1.0F, true}, "output"),
            "Ch -9223372036854775807");
}

TEST(ConnectionsCell, IsEmptyForAnUnknownColumn) {
  EXPECT_EQ(textOf({0, 0, 1.0F, true}, "volume"), "");
  EXPECT_EQ(textOf({0, 0, 1.0F, true}, ""), "");
  EXPECT_EQ(textOf({0, 0, 1.0F, true}, "Input"), "");
}

class ConnectionsTableTest : public WindowTest {
 protected:
  ConnectionsTableTest() { openQuietly(); }

  [[nodiscard]] ConnectionsTableView& table() const {
    return control<ConnectionsTableView>("connectionsTableView");
  }
  [[nodiscard]] QModelIndex cell(int row, int column) const { return table().model()->index(row, column); }
};

TEST_F(ConnectionsTableTest, IsEmptyWithoutRoutes) {
  EXPECT_THAT(tableTexts(), IsEmpty());
}

TEST_F(ConnectionsTableTest, ListsTheRoutesInOrder) {
  addRoute("1", "6", "0.5");
  clickCell(2, 3);
  EXPECT_THAT(tableTexts(), ElementsAre(ElementsAre("Ch 1", "Ch 6", "0.50", "✓"),
                                        ElementsAre("Ch 3", "Ch 4", "1.00", "✓")));
}

TEST_F(ConnectionsTableTest, CellsAreWhiteInAMonospacedFont) {
  clickCell(2, 3);
  for (int column = 0; column < 4; ++column) {
    EXPECT_EQ(cell(0, column).data(Qt::ForegroundRole).value<QColor>(), QColor(255, 255, 255));
    const auto font = cell(0, column).data(Qt::FontRole).value<QFont>();
    EXPECT_EQ(font.pixelSize(), 11);
    // Not every monospaced font says so of itself.
    EXPECT_EQ(QFontMetricsF(font).horizontalAdvance("iiii"), QFontMetricsF(font).horizontalAdvance("WWWW"));
    EXPECT_FALSE(font.bold());
  }
}

TEST_F(ConnectionsTableTest, TheMarkIsSpokenAsAWord) {
  clickCell(2, 3);
  EXPECT_EQ(cell(0, 3).data(Qt::AccessibleTextRole).toString(), "on");
  EXPECT_EQ(cell(0, 0).data(Qt::AccessibleTextRole).toString(), "Ch 3");
}

TEST_F(ConnectionsTableTest, IsReadOnly) {
  clickCell(2, 3);
  EXPECT_EQ(table().editTriggers(), QAbstractItemView::NoEditTriggers);
  for (int column = 0; column < 4; ++column) EXPECT_FALSE(cell(0, column).flags() & Qt::ItemIsEditable);
  clickTableRow(0);
  key(Qt::Key_F2);
  key(Qt::Key_7);
  EXPECT_THAT(tableTexts(), ElementsAre(ElementsAre("Ch 3", "Ch 4", "1.00", "✓")));
}

TEST_F(ConnectionsTableTest, SelectingARowChangesNothingElse) {
  clickCell(2, 3);
  clickCell(4, 5);
  statusTexts();
  const QImage before = view->grab(QRect(0, 0, 600, 720)).toImage();
  clickTableRow(1);
  EXPECT_EQ(table().selectedRow(), 1);
  EXPECT_EQ(table().selectionModel()->selectedIndexes().size(), 4) << "a whole row";
  EXPECT_THAT(statusTexts(), IsEmpty());
  EXPECT_EQ(control<QLineEdit>("inputChannelField").text(), "1");
  EXPECT_EQ(view->grab(QRect(0, 0, 600, 720)).toImage(), before);
}

TEST_F(ConnectionsTableTest, DrawsItsBackgroundAndAHorizontalLineUnderEachRow) {
  clickCell(2, 3);
  clickCell(4, 5);
  const QImage image = table().viewport()->grab().toImage();
  const qreal scale = image.devicePixelRatio();
  const auto pixel = [&](double x, double y) {
    return image.pixelColor(QPointF(x * scale, y * scale).toPoint());
  };
  const QColor background(36, 36, 36);
  const QColor line(56, 56, 56);
  const int height = table().rowHeight(0);
  for (const int x : {1, 100, 183, 184, 250}) {
    EXPECT_EQ(pixel(x, height - 1), line) << x;
    EXPECT_EQ(pixel(x, 2 * height - 1), line) << x;
  }
  EXPECT_EQ(pixel(250, height / 2.0), background);
  EXPECT_EQ(pixel(51, 2), background) << "no line between columns";
  EXPECT_EQ(pixel(100, 3 * height - 1), background) << "no line where there is no row";
  EXPECT_EQ(table().gridColor(), line);
  EXPECT_FALSE(table().showGrid());
}

TEST_F(ConnectionsTableTest, ASelectedRowIsSelectedToItsEnd) {
  clickCell(2, 3);
  clickTableRow(0);
  const QImage image = table().viewport()->grab().toImage();
  const qreal scale = image.devicePixelRatio();
  EXPECT_EQ(image.pixelColor((QPointF(250, 5) * scale).toPoint()),
            table().palette().color(QPalette::Highlight));
}

TEST_F(ConnectionsTableTest, KeepsItsScrollPositionOverAReload) {
  for (int row = 0; row < 8; ++row) {
    for (int column = 0; column < 4; ++column) clickCell(row, column);
  }
  table().scrollToBottom();
  const int before = table().verticalScrollBar()->value();
  ASSERT_GT(before, 0);
  clickCell(9, 9);
  EXPECT_EQ(table().verticalScrollBar()->value(), before);
}

TEST_F(ConnectionsTableTest, ItsScrollBarShowsAThumbOnlyWhenThereIsSomethingToScroll) {
  QScrollBar& bar = *table().verticalScrollBar();
  const auto thumbPixels = [&bar] {
    const QImage image = bar.grab().toImage();
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
      count += image.pixelColor(image.width() / 2, y).lightness() > 60 ? 1 : 0;
    return count;
  };
  EXPECT_TRUE(bar.isVisible());
  EXPECT_EQ(thumbPixels(), 0);
  for (int row = 0; row < 8; ++row) {
    for (int column = 0; column < 4; ++column) clickCell(row, column);
  }
  EXPECT_GT(thumbPixels(), 20);
  EXPECT_LT(thumbPixels(), bar.height() - 20);
}

TEST_F(ConnectionsTableTest, ItsScrollBarIsWorkedByTheMouse) {
  for (int row = 0; row < 8; ++row) {
    for (int column = 0; column < 4; ++column) clickCell(row, column);
  }
  QScrollBar& bar = *table().verticalScrollBar();
  ASSERT_GT(bar.maximum(), 0);
  clickAt(bar, {bar.width() / 2, bar.height() - 3});  // beside the thumb: one page down
  EXPECT_EQ(bar.value(), std::min(bar.pageStep(), bar.maximum()));
  clickAt(bar, {bar.width() / 2, 2});
  EXPECT_EQ(bar.value(), std::max(0, std::min(bar.pageStep(), bar.maximum()) - bar.pageStep()));
  // Drags the thumb to the end.
  QWindow* const window = view->windowHandle();
  const QPoint top = bar.mapTo(view, QPoint(bar.width() / 2, 8));
  QTest::mousePress(window, Qt::LeftButton, {}, top);
  QTest::mouseMove(window, top + QPoint(0, 60));
  QTest::mouseMove(window, top + QPoint(0, 400));
  QTest::mouseRelease(window, Qt::LeftButton, {}, top + QPoint(0, 400));
  EXPECT_EQ(bar.value(), bar.maximum());
}

}  // namespace
}  // namespace tolvane::test
