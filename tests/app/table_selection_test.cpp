// The connections table's selection: its band, and how pointer, keys and reloads change it.
#include <QApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "app/window_fixture.h"

namespace tolvane::test {
namespace {

/// A widget's pixels on the screen. A part that the widget does not repaint keeps its old pixels.
class ShownPixels : public QObject {
 public:
  explicit ShownPixels(QWidget& widget) : widget_(widget), image_(widget.grab().toImage()) {
    widget.installEventFilter(this);
  }

  [[nodiscard]] const QImage& image() {
    QApplication::processEvents();
    const QRegion painted = std::exchange(painted_, {});
    const QImage whole = widget_.grab().toImage();
    painted_ = {};
    QPainter painter(&image_);
    for (const QRect& part : painted) painter.drawImage(part, whole, part);
    return image_;
  }

 protected:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::Paint) painted_ += static_cast<QPaintEvent*>(event)->region();
    return false;
  }

 private:
  QWidget& widget_;
  QImage image_;
  QRegion painted_;
};

class TableSelectionTest : public WindowTest {
 protected:
  TableSelectionTest() {
    openQuietly();
    shown = std::make_unique<ShownPixels>(*table().viewport());
  }

  [[nodiscard]] ConnectionsTableView& table() const {
    return control<ConnectionsTableView>("connectionsTableView");
  }

  void addRoutes(int count) {
    for (int i = 0; i < count; ++i) clickCell(i / 4, i % 4);
  }

  /// A point of a row, in the rows' coordinates.
  [[nodiscard]] QPoint pointInRow(int row, int x) const {
    return {x, table().rowViewportPosition(row) + table().rowHeight(row) / 2};
  }

  /// The distinct colours on the row's first line of pixels on the screen, where no glyph reaches.
  [[nodiscard]] std::vector<QColor> coloursOf(int row) const {
    const QImage& image = shown->image();
    const int y = table().rowViewportPosition(row) + 1;
    std::vector<QColor> colours;
    for (int x = 0; x < image.width(); ++x) {
      const QColor colour = QColor(image.pixel(x, y));
      if (std::ranges::find(colours, colour) == colours.end()) colours.push_back(colour);
    }
    return colours;
  }
  void expectBandOnRowAlone(int row) const {
    const QColor band = table().palette().color(QPalette::Highlight);
    const QColor background(36, 36, 36);
    for (int each = 0; each < table().model()->rowCount(); ++each) {
      EXPECT_THAT(coloursOf(each), ::testing::ElementsAre(each == row ? band : background))
          << "row " << each + 1 << " of the table";
    }
  }

  std::unique_ptr<ShownPixels> shown;
};

TEST_F(TableSelectionTest, TheBandMovesWholeByKeys) {
  addRoutes(6);
  clickTableRow(2);
  expectBandOnRowAlone(2);
  key(Qt::Key_Down);
  expectBandOnRowAlone(3);
  key(Qt::Key_Up);
  key(Qt::Key_Up);
  expectBandOnRowAlone(1);
}

TEST_F(TableSelectionTest, TheBandMovesWholeByThePointer) {
  addRoutes(6);
  clickTableRow(2);
  clickTableRow(4);
  expectBandOnRowAlone(4);
  clickAt(*table().viewport(), {10, table().viewport()->height() - 5});
  expectBandOnRowAlone(-1);
}

TEST_F(TableSelectionTest, TheBandGoesWithItsRow) {
  addRoutes(3);
  clickTableRow(2);
  press("removeConnection");
  expectBandOnRowAlone(-1);
}

TEST_F(TableSelectionTest, KeysBeginAtTheFirstRow) {
  addRoutes(6);
  for (const Qt::Key each : {Qt::Key_Down, Qt::Key_Up, Qt::Key_PageDown}) {
    press("clearConnections");
    addRoutes(6);
    table().setFocus(Qt::TabFocusReason);
    ASSERT_EQ(table().selectedRow(), -1);
    key(each);
    EXPECT_EQ(table().selectedRow(), 0) << each;
  }
  key(Qt::Key_Down);
  EXPECT_EQ(table().selectedRow(), 1) << "and go on from there";
}

TEST_F(TableSelectionTest, KeysBeginAtTheFirstRowWhereverTheLastSelectionWas) {
  addRoutes(6);
  clickTableRow(3);
  clickAt(*table().viewport(), {10, table().viewport()->height() - 5});
  ASSERT_EQ(table().selectedRow(), -1);
  key(Qt::Key_Down);
  EXPECT_EQ(table().selectedRow(), 0);
}

TEST_F(TableSelectionTest, AClickRightOfTheColumnsSelectsTheRowThere) {
  addRoutes(6);
  for (const int row : {4, 1}) {
    clickAt(*table().viewport(), pointInRow(row, 250));
    EXPECT_EQ(table().selectedRow(), row);
    expectBandOnRowAlone(row);
  }
  clickAt(*table().viewport(), pointInRow(3, table().viewport()->width() - 1));
  EXPECT_EQ(table().selectedRow(), 3);
}

TEST_F(TableSelectionTest, AReloadDoesNotJumpToTheSelection) {
  addRoutes(40);
  clickTableRow(1);
  table().scrollToBottom();
  QScrollBar& bar = *table().verticalScrollBar();
  const int bottom = bar.value();
  ASSERT_GT(bottom, 5);
  clickCell(11, 9);
  QApplication::processEvents();
  EXPECT_EQ(bar.value(), bottom);
  EXPECT_EQ(table().selectedRow(), 1);
  bar.setValue(5);
  clickCell(11, 9);
  QApplication::processEvents();
  EXPECT_EQ(bar.value(), 5);
  press("removeConnection");
  QApplication::processEvents();
  EXPECT_EQ(bar.value(), 5) << "the removal of a route above is no reason either";
}

TEST_F(TableSelectionTest, AReloadStaysWithinAShorterList) {
  addRoutes(40);
  clickTableRow(0);
  table().scrollToBottom();
  press("presetThru12");
  QApplication::processEvents();
  EXPECT_EQ(table().verticalScrollBar()->value(), 0);
  expectBandOnRowAlone(0);
}

}  // namespace
}  // namespace tolvane::test
