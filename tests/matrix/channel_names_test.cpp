// The names of channels in tool tips and for assistive technology. The strips go on showing numbers.
#include "matrix/channel_names.h"

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QTest>
#include <QToolTip>

#include <gmock/gmock.h>

#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_col_header.h"
#include "matrix/patch_matrix_row_header.h"
#include "matrix/patch_matrix_view.h"

namespace tolvane {
namespace {

ChannelNamer onlyOf(std::int64_t channel, const QString& name) {
  return [=](std::int64_t asked) { return asked == channel ? name : QString(); };
}

TEST(ChannelText, IsTheNumberWithoutAName) {
  EXPECT_EQ(inputName(2), QStringLiteral("In 3"));
  EXPECT_EQ(outputName(6, onlyOf(5, QStringLiteral("FL"))), QStringLiteral("Out 7"));
  EXPECT_EQ(cellName({2, 6}), QStringLiteral("In 3 → Out 7"));
}

TEST(ChannelText, HasTheNameBehindTheNumber) {
  EXPECT_EQ(
      cellName({2, 4}, onlyOf(2, QStringLiteral("capture_AUX2")), onlyOf(4, QStringLiteral("playback_FL"))),
      QStringLiteral("In 3 capture_AUX2 → Out 5 playback_FL"));
  EXPECT_EQ(cellName({2, 4}, onlyOf(2, QStringLiteral("Größe"))), QStringLiteral("In 3 Größe → Out 5"));
}

TEST(ChannelText, StaysOnOneLineAndInItsDirection) {
  EXPECT_EQ(inputName(0, onlyOf(0, QStringLiteral("a\nb\r\tc\u0085d\u2028e\033[2J"))),
            QStringLiteral("In 1 a b  c d e [2J"));
  EXPECT_EQ(inputName(0, onlyOf(0, QStringLiteral("a\u202Eb\u2066c"))), QStringLiteral("In 1 a b c"));
  EXPECT_EQ(inputName(0, onlyOf(0, QStringLiteral(" \n "))), QStringLiteral("In 1"));
}

TEST(ChannelText, IsCutIfItIsVeryLong) {
  EXPECT_EQ(inputName(0, onlyOf(0, QString(80, u'x'))), QStringLiteral("In 1 ") + QString(80, u'x'));
  EXPECT_EQ(inputName(0, onlyOf(0, QString(5000, u'x'))), QStringLiteral("In 1 ") + QString(79, u'x') + u'…');
  const QString pairs = QString(78, u'x') + QStringLiteral("\U0001F941\U0001F941");
  EXPECT_EQ(inputName(0, onlyOf(0, pairs)), QStringLiteral("In 1 ") + QString(78, u'x') + u'…');
}

class ChannelNamesInMatrix : public ::testing::Test {
 protected:
  ChannelNamesInMatrix() : view_(QRect(0, 0, 576, 298)) {
    view_.configure(18, 20, {});
    view_.setChannelNames(onlyOf(2, QStringLiteral("capture_AUX2")),
                          onlyOf(4, QStringLiteral("playback_FL")));
    view_.show();
  }
  ~ChannelNamesInMatrix() override { QToolTip::hideText(); }

  static void restAt(QWidget& widget, const QPoint& point) {
    QHelpEvent event(QEvent::ToolTip, point, widget.mapToGlobal(point));
    QApplication::sendEvent(&widget, &event);
  }
  static bool isNoToolTip() {
    return QTest::qWaitFor([] { return !QToolTip::isVisible(); });
  }
  [[nodiscard]] QAccessibleTableInterface& table() const {
    return *QAccessible::queryAccessibleInterface(view_.canvas)->tableInterface();
  }
  [[nodiscard]] static QString nameOf(QAccessibleInterface* object) {
    return object == nullptr ? QStringLiteral("no object") : object->text(QAccessible::Name);
  }

  PatchMatrixView view_;
};

TEST_F(ChannelNamesInMatrix, AreInTheToolTipsOfCells) {
  restAt(*view_.canvas, {4 * 16 + 3, 2 * 16 + 9});
  EXPECT_EQ(QToolTip::text(), QStringLiteral("In 3 capture_AUX2 → Out 5 playback_FL"));
  restAt(*view_.canvas, {3, 3});
  EXPECT_EQ(QToolTip::text(), QStringLiteral("In 1 → Out 1"));
}

TEST_F(ChannelNamesInMatrix, AreTheToolTipsOfTheNumbersThatHaveOne) {
  restAt(*view_.rowHeader, {10, 2 * 16 + 9});
  EXPECT_EQ(QToolTip::text(), QStringLiteral("In 3 capture_AUX2"));
  restAt(*view_.colHeader, {4 * 16 + 3, 10});
  EXPECT_EQ(QToolTip::text(), QStringLiteral("Out 5 playback_FL"));
  restAt(*view_.colHeader, {3, 10});
  EXPECT_TRUE(isNoToolTip());
}

TEST_F(ChannelNamesInMatrix, FollowTheStripsScrolling) {
  view_.rowHeader->scrollOffset = 24.0;
  restAt(*view_.rowHeader, {10, 2 * 16 - 24 + 9});
  EXPECT_EQ(QToolTip::text(), QStringLiteral("In 3 capture_AUX2"));
  view_.colHeader->scrollOffset = 64.0;
  restAt(*view_.colHeader, {3, 10});
  EXPECT_EQ(QToolTip::text(), QStringLiteral("Out 5 playback_FL"));
}

TEST_F(ChannelNamesInMatrix, AreNeverRichText) {
  view_.setChannelNames(onlyOf(0, QStringLiteral("<b>x</b><img src=/etc/passwd>&amp;")), {});
  restAt(*view_.canvas, {3, 3});
  EXPECT_EQ(
      QToolTip::text(),
      QStringLiteral("<span>In 1 &lt;b&gt;x&lt;/b&gt;&lt;img src=/etc/passwd&gt;&amp;amp; → Out 1</span>"));
}

TEST_F(ChannelNamesInMatrix, AreTheAccessibleNames) {
  EXPECT_EQ(nameOf(table().cellAt(2, 4)), QStringLiteral("In 3 capture_AUX2 → Out 5 playback_FL"));
  EXPECT_EQ(nameOf(table().cellAt(0, 0)), QStringLiteral("In 1 → Out 1"));
  EXPECT_EQ(table().rowDescription(2), QStringLiteral("In 3 capture_AUX2"));
  EXPECT_EQ(table().columnDescription(4), QStringLiteral("Out 5 playback_FL"));
  EXPECT_EQ(nameOf(QAccessible::queryAccessibleInterface(view_.rowHeader)->child(2)),
            QStringLiteral("In 3 capture_AUX2"));
  EXPECT_EQ(nameOf(QAccessible::queryAccessibleInterface(view_.colHeader)->child(4)),
            QStringLiteral("Out 5 playback_FL"));
  EXPECT_EQ(nameOf(QAccessible::queryAccessibleInterface(view_.colHeader)->child(0)),
            QStringLiteral("Out 1"));
}

TEST_F(ChannelNamesInMatrix, OfAnotherDeviceReplaceThem) {
  QAccessibleInterface* const cell = table().cellAt(2, 4);
  view_.setChannelNames({}, onlyOf(4, QStringLiteral("FR")));
  EXPECT_EQ(nameOf(cell), QStringLiteral("In 3 → Out 5 FR"));
  view_.setChannelNames({}, {});
  EXPECT_EQ(nameOf(cell), QStringLiteral("In 3 → Out 5"));
  restAt(*view_.rowHeader, {10, 2 * 16 + 9});
  EXPECT_TRUE(isNoToolTip());
}

}  // namespace
}  // namespace tolvane
