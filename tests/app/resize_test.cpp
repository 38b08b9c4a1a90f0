// The view in a window of another size. Controls keep their size and their distance to the lower left corner.
#include <QApplication>
#include <map>

#include "app/window_fixture.h"

namespace tolvane::test {
namespace {

class ResizeTest : public WindowTest {
 protected:
  ResizeTest() { openQuietly(); }

  /// Every control's frame, measured from the lower left corner.
  [[nodiscard]] std::map<std::string, QRect> frames() const {
    std::map<std::string, QRect> found;
    for (const QWidget* const widget : view->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
      const QRect geometry = widget->geometry();
      found[widget->objectName().toStdString()] =
          QRect(geometry.x(), view->height() - geometry.y() - geometry.height(), geometry.width(),
                geometry.height());
    }
    return found;
  }

  void resizeTo(int width, int height) {
    view->resize(width, height);
    QApplication::processEvents();
    ASSERT_EQ(view->size(), QSize(width, height));
  }
};

TEST_F(ResizeTest, NothingMovesOrStretches) {
  const auto before = frames();
  ASSERT_EQ(before.size(), 35U);
  resizeTo(1400, 1000);
  EXPECT_EQ(frames(), before);
  resizeTo(700, 500);
  EXPECT_EQ(frames(), before);
  resizeTo(920, 720);
  EXPECT_EQ(frames(), before);
}

TEST_F(ResizeTest, ALargerViewShowsItsBackgroundAboveAndToTheRight) {
  resizeTo(1400, 1000);
  const QImage image = view->grab().toImage();
  const qreal scale = image.devicePixelRatio();
  const QColor background(28, 28, 28);
  EXPECT_EQ(image.pixelColor((QPointF(400, 100) * scale).toPoint()), background);
  EXPECT_EQ(image.pixelColor((QPointF(1300, 990) * scale).toPoint()), background);
  EXPECT_EQ(image.pixelColor((QPointF(500, 998) * scale).toPoint()), QColor(20, 20, 20)) << "the bottom bar";
  EXPECT_EQ(image.pixelColor((QPointF(500, 281) * scale).toPoint()), QColor(20, 20, 20)) << "the top bar";
  EXPECT_EQ(image.pixelColor((QPointF(921, 281) * scale).toPoint()), background);
}

TEST_F(ResizeTest, ASmallerViewCutsOffTheTopAndTheRight) {
  resizeTo(700, 500);
  EXPECT_EQ(buttonOf("startStopTapped").geometry(), QRect(836, -215, 72, 26));
  EXPECT_EQ(buttonOf("savePatch").geometry(), QRect(18, 458, 110, 26));
}

TEST_F(ResizeTest, TheControlsWorkWhereTheyThenAre) {
  resizeTo(1400, 1000);
  press("presetThru12");
  EXPECT_EQ(routes().size(), 2U);
  clickCell(4, 7);
  EXPECT_EQ(routes().back(), plainRoute(4, 7));
}

}  // namespace
}  // namespace tolvane::test
