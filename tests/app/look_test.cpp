// Readability of the window: contrast, texts within their frames, emoji in their colours.
#include <QApplication>
#include <QProxyStyle>
#include <algorithm>
#include <cmath>

#include "app/window_fixture.h"

namespace tolvane::test {
namespace {

double luminance(const QColor& color) {
  const auto linear = [](double level) {
    return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(static_cast<double>(color.redF())) +
         0.7152 * linear(static_cast<double>(color.greenF())) +
         0.0722 * linear(static_cast<double>(color.blueF()));
}

double contrast(const QColor& first, const QColor& second) {
  const auto [low, high] = std::minmax({luminance(first), luminance(second)});
  return (high + 0.05) / (low + 0.05);
}

class LookTest : public WindowTest {
 protected:
  LookTest() { openQuietly(); }
};

TEST_F(LookTest, TextsStandOutFromWhatIsBehindThem) {
  const QPalette palette = QApplication::palette();
  struct Pair {
    QPalette::ColorRole text;
    QPalette::ColorRole behind;
  };
  for (const auto& [text, behind] :
       {Pair{QPalette::WindowText, QPalette::Window}, Pair{QPalette::Text, QPalette::Base},
        Pair{QPalette::ButtonText, QPalette::Button}, Pair{QPalette::HighlightedText, QPalette::Highlight},
        Pair{QPalette::ToolTipText, QPalette::ToolTipBase}}) {
    EXPECT_GE(contrast(palette.color(text), palette.color(behind)), 4.5) << text;
    EXPECT_LT(luminance(palette.color(QPalette::Disabled, text)), luminance(palette.color(text))) << text;
  }
}

TEST_F(LookTest, TheStyleIsOneOnEveryDesktop) {
  const auto* const style = qobject_cast<const QProxyStyle*>(QApplication::style());
  ASSERT_NE(style, nullptr);
  EXPECT_EQ(style->baseStyle()->name(), "fusion");
  EXPECT_EQ(QApplication::font().pixelSize(), 13);
  EXPECT_EQ(QApplication::font().pointSize(), -1);
}

TEST_F(LookTest, EveryTextFitsItsFrame) {
  for (const QLabel* const label : view->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
    if (label->text().contains(u'\n')) continue;
    EXPECT_LE(label->fontMetrics().horizontalAdvance(label->text()), label->width())
        << label->text().toStdString();
  }
  for (const QPushButton* const button : view->findChildren<QPushButton*>()) {
    EXPECT_LE(button->fontMetrics().horizontalAdvance(button->text()), button->width() - 8)
        << button->text().toStdString();
  }
  for (const char* const name : {"inputChannelField", "outputChannelField", "gainField"}) {
    const auto& field = control<QLineEdit>(name);
    EXPECT_LE(field.fontMetrics().horizontalAdvance("128"), field.width() - 10) << name;
  }
}

TEST_F(LookTest, TheHeadingAndTheLegendDoNotCollide) {
  const auto& heading = control<QLabel>("matrixHeading");
  const auto& legend = control<QLabel>("matrixLegend");
  EXPECT_LT(heading.x() + heading.fontMetrics().horizontalAdvance(heading.text()), legend.x());
}

TEST_F(LookTest, TheExplanationShowsEveryLineWithinItsFrame) {
  auto& label = control<QLabel>("informationText");
  const QStringList lines = label.text().split(u'\n');
  ASSERT_EQ(lines.size(), 13);
  const QImage image = label.grab().toImage();
  const qreal scale = image.devicePixelRatio();
  const QColor background = image.pixelColor(image.width() - 1, 0);
  const auto hasInk = [&](int fromX, int toX, double fromY, double toY) {
    for (int y = qRound(fromY * scale); y < qRound(toY * scale); ++y) {
      for (int x = qRound(fromX * scale); x < qRound(toX * scale); ++x) {
        if (image.pixelColor(x, y) != background) return true;
      }
    }
    return false;
  };
  for (int line = 0; line < 13; ++line) {
    // The middle of the line's band, where every letter has ink.
    EXPECT_EQ(hasInk(0, 862, line * 12 + 4, line * 12 + 9), !lines[line].isEmpty()) << line;
  }
  EXPECT_FALSE(hasInk(840, 862, 0, 156)) << "no line is wrapped or cut";
}

TEST_F(LookTest, TheLegendsCircleIsGreen) {
  auto& legend = control<QLabel>("matrixLegend");
  const QImage image = legend.grab().toImage();
  int green = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QColor color = image.pixelColor(x, y);
      green += color.green() > 120 && color.green() > color.red() + 40 && color.green() > color.blue() + 40
                   ? 1
                   : 0;
    }
  }
  EXPECT_GT(green, 20);
}

TEST_F(LookTest, TheButtonsPicturesAreColoured) {
  for (const char* const action : {"savePatch", "loadPatch"}) {
    const QImage image = buttonOf(action).grab().toImage();
    int coloured = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) coloured += image.pixelColor(x, y).hsvSaturation() > 60 ? 1 : 0;
    }
    EXPECT_GT(coloured, 10) << action;
  }
}

TEST_F(LookTest, ButtonsHaveRoundCorners) {
  // The corner shows the background behind the button. The middle of the edge shows the button.
  QPushButton& button = buttonOf("addConnection");
  const QImage image = view->grab(button.geometry()).toImage();
  EXPECT_EQ(image.pixelColor(0, 0), QColor(28, 28, 28));
  EXPECT_GT(image.pixelColor(image.width() / 2, 0).lightness(), 60);
  EXPECT_EQ(image.pixelColor(image.width() - 1, image.height() - 1), QColor(28, 28, 28));
}

TEST_F(LookTest, APressedButtonLooksPressed) {
  QPushButton& button = buttonOf("addConnection");
  const auto fill = [&button] { return button.grab().toImage().pixelColor(6, 6); };
  const QColor normal = fill();
  EXPECT_EQ(normal, QApplication::palette().color(QPalette::Button));
  button.setDown(true);
  EXPECT_LT(fill().lightness(), normal.lightness());
  button.setDown(false);
  button.setEnabled(false);
  EXPECT_EQ(fill(), QApplication::palette().color(QPalette::Disabled, QPalette::Button));
}

}  // namespace
}  // namespace tolvane::test
