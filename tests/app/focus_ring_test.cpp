// Every control with the focus shows a ring, all in the same colour.
#include <QApplication>
#include <QTest>

#include "app/window_fixture.h"

namespace tolvane::test {
namespace {

const QColor kRing(102, 179, 255);

class FocusRingTest : public WindowTest {
 protected:
  FocusRingTest() { openQuietly(); }

  /// The window's control that has the focus or contains the focused part.
  [[nodiscard]] QWidget* focused() const {
    QWidget* widget = QApplication::focusWidget();
    while (widget != nullptr && widget->parentWidget() != view) widget = widget->parentWidget();
    return widget;
  }

  /// Number of pixels in the ring's colour, inside a part of the view and outside it.
  struct RingPixels {
    int within = 0;
    int beside = 0;
  };
  [[nodiscard]] RingPixels ringPixels(const QRect& part) const {
    QApplication::processEvents();
    const QImage image = view->grab().toImage();
    const double scale = image.devicePixelRatio();
    const QRect area = QRectF(part.topLeft() * scale, part.size() * scale).toAlignedRect();
    RingPixels count;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, y) == kRing) ++(area.contains(x, y) ? count.within : count.beside);
      }
    }
    return count;
  }

  [[nodiscard]] ConnectionsTableView& table() const {
    return control<ConnectionsTableView>("connectionsTableView");
  }
  [[nodiscard]] QRect tableFrame() const { return control<QWidget>("connectionsScrollView").geometry(); }
};

TEST_F(FocusRingTest, EachControlHasTheOneRingWhileItHasTheFocus) {
  buttonOf("startStopTapped").setFocus();
  for (int stop = 0; stop < 15; ++stop) {
    key(Qt::Key_Tab);
    ASSERT_NE(focused(), nullptr);
    SCOPED_TRACE(focused()->objectName().toStdString());
    const RingPixels ring = ringPixels(focused()->geometry());
    EXPECT_GT(ring.within, 40);
    EXPECT_EQ(ring.beside, 0);
  }
}

TEST_F(FocusRingTest, IsOnAnEmptyTableAndOnAFullOne) {
  const QRect frame = tableFrame();
  EXPECT_EQ(ringPixels(frame).within, 0);
  table().setFocus(Qt::TabFocusReason);
  const int onEmpty = ringPixels(frame).within;
  EXPECT_GT(onEmpty, 2 * (frame.width() + frame.height())) << "it goes round the whole frame";
  press("presetThru12");
  table().setFocus(Qt::TabFocusReason);
  key(Qt::Key_Down);
  EXPECT_EQ(ringPixels(frame).within, onEmpty) << "and a row has none of its own";
}

TEST_F(FocusRingTest, GoesWithTheWindow) {
  table().setFocus(Qt::TabFocusReason);
  EXPECT_GT(ringPixels(tableFrame()).within, 0);
  QWidget other;
  other.show();
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  EXPECT_EQ(ringPixels(tableFrame()).within, 0) << "another window has the keys now";
}

}  // namespace
}  // namespace tolvane::test
