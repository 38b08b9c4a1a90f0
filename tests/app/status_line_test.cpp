#include <QApplication>
#include <thread>

#include "app/window_fixture.h"

namespace tolvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StatusLineTest : public WindowTest {
 protected:
  StatusLineTest() { open(); }
};

TEST_F(StatusLineTest, ATextIsShownLater) {
  statusTexts();
  controller->setStatus("first");
  EXPECT_EQ(text("statusLabel"), "Device: Studio Mix — configure patch then press Start.");
  QApplication::processEvents();
  EXPECT_EQ(text("statusLabel"), "first");
}

TEST_F(StatusLineTest, TextsComeInTheOrderOfTheCalls) {
  statusTexts();
  for (const char* const text : {"one", "two", "three"}) controller->setStatus(text);
  EXPECT_THAT(statusTexts(), ElementsAre("one", "two", "three"));
  EXPECT_EQ(text("statusLabel"), "three");
}

TEST_F(StatusLineTest, MayBeWrittenFromAnyThread) {
  statusTexts();
  std::thread([this] {
    for (int i = 0; i < 100; ++i) controller->setStatus(QString::number(i));
  }).join();
  EXPECT_THAT(trace->take(), IsEmpty()) << "nothing but the main thread writes the label";
  const auto texts = statusTexts();
  ASSERT_EQ(texts.size(), 100U);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(texts[static_cast<std::size_t>(i)], std::to_string(i));
}

TEST_F(StatusLineTest, WhatIsWaitingGoesWithTheWindow) {
  statusTexts();
  bool shown = false;
  QObject::connect(&control<QLabel>("statusLabel"), &QObject::destroyed, [&shown] { shown = true; });
  controller->setStatus("too late");
  trace.reset();
  controller.reset();
  EXPECT_TRUE(shown);
  QApplication::processEvents();
}

TEST_F(StatusLineTest, CountsInactiveRoutesAsConfigured) {
  addRoute("1", "1", "1.0");
  addRoute("1", "1", "0.5");
  addRoute("2", "1", "0.5");
  EXPECT_EQ(statusText(), "3 connection(s) configured — press Start to route.");
}

TEST_F(StatusLineTest, WhatDoesNotFitEndsInAnEllipsisAndStaysWhole) {
  auto& label = control<QLabel>("statusLabel");
  const QString longText = QString(400, u'W');
  controller->setStatus(longText);
  QApplication::processEvents();
  EXPECT_EQ(label.text(), longText);
  // The ellipsis takes the last character's place: dots at the bottom, nothing above.
  const QImage image = label.grab().toImage();
  const qreal scale = image.devicePixelRatio();
  const auto inkAbove = [&](int fromX, int toX) {
    int count = 0;
    for (int x = qRound(fromX * scale); x < qRound(toX * scale); ++x) {
      for (int y = 0; y < image.height() / 2; ++y) count += image.pixelColor(x, y).lightness() > 90 ? 1 : 0;
    }
    return count;
  };
  EXPECT_GT(inkAbove(0, 30), 0);
  EXPECT_EQ(inkAbove(595, 600), 0);
}

TEST_F(StatusLineTest, TwoLinesAreShownAsOne) {
  auto& label = control<QLabel>("statusLabel");
  const auto picture = [&](const char* text) {
    controller->setStatus(text);
    QApplication::processEvents();
    return label.grab().toImage();
  };
  EXPECT_EQ(picture("first\nsecond"), picture("first second"));
}

}  // namespace
}  // namespace tolvane::test
