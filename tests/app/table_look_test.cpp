// The connections table in pixels: inactive rows, the end of the header, truncated text.
#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QScrollArea>
#include <QTest>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "app/panel_fixture.h"

namespace tolvane::test {
namespace {

constexpr int kActiveWhite = 255;
constexpr int kInactiveGrey = 115;

class TableLookTest : public PanelTest {
 protected:
  TableLookTest() { openQuietly(); }

  [[nodiscard]] ConnectionsTableView& table() const {
    return control<ConnectionsTableView>("connectionsTableView");
  }

  void loadAnActiveAndAnInactiveRoute() {
    write("two.json", R"([{"inputChannel":7,"outputChannel":7,"gain":8.0,"active":true},
                          {"inputChannel":7,"outputChannel":7,"gain":8.0,"active":false}])");
    press("loadPatch");
    confirm(path("two.json"));
    ASSERT_EQ(routes().size(), 2U);
  }

  [[nodiscard]] QImage imageOf(int row, int column) const {
    const QRect cell = table().visualRect(table().model()->index(row, column)).adjusted(0, 0, 0, -1);
    return table().viewport()->grab(cell).toImage();
  }

  /// The brightest red of a cell. The band and the background have less red than either text.
  [[nodiscard]] int brightestRed(int row, int column) const {
    const QImage image = imageOf(row, column);
    int brightest = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) brightest = std::max(brightest, image.pixelColor(x, y).red());
    }
    return brightest;
  }

  void restAt(const QPoint& point) {
    QHelpEvent event(QEvent::ToolTip, point, table().viewport()->mapToGlobal(point));
    QApplication::sendEvent(table().viewport(), &event);
  }
  void expectNoToolTipAt(const QPoint& point) {
    restAt(point);
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
  }
  [[nodiscard]] QPoint centreOf(int row, int column) const {
    return table().visualRect(table().model()->index(row, column)).center();
  }
};

TEST_F(TableLookTest, AnInactiveRowIsGreySelectedOrNot) {
  loadAnActiveAndAnInactiveRoute();
  for (const int selected : {-1, 0, 1}) {
    if (selected >= 0) clickTableRow(selected);
    for (int column = 0; column < 4; ++column) {
      SCOPED_TRACE(testing::Message() << "column " << column << ", row " << selected << " selected");
      EXPECT_LE(brightestRed(1, column), kInactiveGrey);
      // Even a thin font leaves some text visible.
      EXPECT_GT(brightestRed(1, column), imageOf(1, column).pixelColor(0, 0).red() + 20);
      EXPECT_GT(brightestRed(0, column), 180);
      EXPECT_LE(brightestRed(0, column), kActiveWhite);
    }
  }
}

TEST_F(TableLookTest, AnInactiveRowStaysLegibleOnTheBand) {
  const QColor band = table().palette().color(QPalette::Highlight);
  const auto luminance = [](const QColor& colour) {
    const auto linear = [](double level) {
      return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
  };
  const double grey = luminance(QColor(kInactiveGrey, kInactiveGrey, kInactiveGrey)) + 0.05;
  EXPECT_GE(grey / (luminance(band) + 0.05), 2.5);
  EXPECT_GE(1.05 / (luminance(band) + 0.05), 7.0);
  EXPECT_GE(band.green(), band.red() + 30) << "and the band is no grey";
}

TEST_F(TableLookTest, TheHeaderReachesTheEndOfItsFrame) {
  const auto& frame = control<QScrollArea>("connectionsScrollView");
  const QRect inside = QRect(frame.geometry()).marginsRemoved(QMargins(1, 1, 1, 1));
  const int height = table().horizontalHeader()->height();
  for (const int y : {0, height / 2, height - 1}) {
    const QImage line = view->grab(QRect(inside.left(), inside.top() + y, inside.width(), 1)).toImage();
    const QColor expected = line.pixelColor(1, 0);
    EXPECT_GT(expected.lightness(), 40) << "the header stands there";
    EXPECT_EQ(line.pixelColor(line.width() - 1, 0), expected) << "line " << y;
    EXPECT_EQ(line.pixelColor(line.width() - 7, 0), expected) << "line " << y;
  }
}

TEST_F(TableLookTest, ACutCellHasAToolTip) {
  addRoute("9223372036854775807", "6", "0.5");
  restAt(centreOf(0, 0));
  EXPECT_EQ(QToolTip::text(), QStringLiteral("Ch 9223372036854775807"));
  EXPECT_TRUE(QToolTip::isVisible());
  for (int column = 1; column < 4; ++column) expectNoToolTipAt(centreOf(0, column));
  restAt(centreOf(0, 0));
  expectNoToolTipAt({250, centreOf(0, 0).y()});
  restAt(centreOf(0, 0));
  expectNoToolTipAt({10, table().viewport()->height() - 5});
}

TEST_F(TableLookTest, ACellHasAToolTipAsSoonAsItIsCut) {
  addRoute("128", "6", "0.5");
  const auto picture = [this](int width) {
    table().setColumnWidth(0, width);
    QApplication::processEvents();
    return table().viewport()->grab(QRect(0, 0, 30, 19)).toImage();
  };
  // Narrows the column step by step. The picture of its left part changes once the text is truncated.
  const QImage whole = picture(80);
  bool wasCut = false;
  for (int width = 79; width >= 30; --width) {
    const bool isCut = picture(width) != whole;
    restAt(centreOf(0, 0));
    EXPECT_EQ(QToolTip::isVisible(), isCut) << width;
    wasCut = wasCut || isCut;
  }
  EXPECT_TRUE(wasCut);
}

}  // namespace
}  // namespace tolvane::test
