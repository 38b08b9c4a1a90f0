#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QtMath>

#include <gtest/gtest.h>

#include "matrix/patch_matrix_col_header.h"
#include "matrix/patch_matrix_row_header.h"
#include "support/qt_pixels.h"

namespace tolvane {
namespace {

constexpr int kStripBackground = 28;
constexpr int kBorder = 77;
constexpr int kTick = 82;
constexpr int kPlain = 140;
constexpr int kAccent = 224;

// Coordinates for both strips: labels follow each other `along` the strip; `across` is the other axis.
struct Strip {
  QImage picture;
  bool column;

  [[nodiscard]] int grey(double along, double across) const {
    return column ? greyAt(picture, along, across) : greyAt(picture, across, along);
  }
  [[nodiscard]] int length() const { return column ? picture.width() : picture.height(); }
  [[nodiscard]] double pixel() const { return 1.0 / picture.devicePixelRatio(); }
};

Strip columns(std::int64_t count, double offset, int length) {
  PatchMatrixColHeader header(QRect(0, 0, length, 38));
  header.outputCount = count;
  header.scrollOffset = offset;
  return {grabbed(header), true};
}

Strip rows(std::int64_t count, double offset, int length) {
  PatchMatrixRowHeader header(QRect(0, 0, 38, length));
  header.inputCount = count;
  header.scrollOffset = offset;
  return {grabbed(header), false};
}

using MakeStrip = Strip (*)(std::int64_t count, double offset, int length);

class HeaderStrip : public ::testing::TestWithParam<MakeStrip> {
 protected:
  static Strip strip(std::int64_t count, double offset, int length) {
    return GetParam()(count, offset, length);
  }
};

struct Ink {
  double first = -1.0;  // along the strip, points
  double last = -1.0;
  int brightest = 0;
  double weight = 0.0;  // sum of the differences from the background
};

// The ink of the labels between two positions along the strip, without border and ticks.
Ink inkBetween(const Strip& strip, double from, double to) {
  Ink ink;
  const double pixel = strip.pixel();
  for (int line = qRound(from / pixel); line < qRound(to / pixel); ++line) {
    for (int step = 0; step < qFloor(32.5 / pixel); ++step) {
      const int level = strip.grey((line + 0.5) * pixel, (step + 0.5) * pixel);
      if (level > kStripBackground + 4) {
        ink.first = ink.first < 0 ? line * pixel : ink.first;
        ink.last = (line + 1) * pixel;
        ink.weight += level - kStripBackground;
        ink.brightest = std::max(ink.brightest, level);
      }
    }
  }
  return ink;
}

TEST_P(HeaderStrip, HasItsBackgroundAndABorderTowardTheGrid) {
  const Strip picture = strip(1, 0.0, 200);
  const double pixel = picture.pixel();
  for (const double along : {0.1, 8.1, 100.1, 199.9}) {
    for (int step = qCeil(34.0 / pixel); step < qRound(38.0 / pixel); ++step) {
      const double covered = coverage(step * pixel, (step + 1) * pixel, 37.0, 38.0);
      EXPECT_NEAR(picture.grey(along, (step + 0.5) * pixel), blended(kStripBackground, kBorder, covered), 1.0)
          << "at " << along << ", device pixel " << step;
    }
  }
  EXPECT_EQ(picture.grey(150, 5), kStripBackground);
}

TEST_P(HeaderStrip, EveryFourthNumberCarriesATickCentredOnItsCell) {
  const Strip picture = strip(16, 0.0, 16 * 16);
  const double pixel = picture.pixel();
  for (int number = 1; number <= 16; ++number) {
    const double centre = 16.0 * number - 8.0;
    for (double along = centre - 3.0; along < centre + 3.0; along += pixel) {
      const double start = qFloor((along + pixel / 2) / pixel) * pixel;
      const double covered =
          number % 4 == 0 ? coverage(start, start + pixel, centre - 0.5, centre + 0.5) : 0.0;
      EXPECT_NEAR(picture.grey(along + pixel / 2, 35.0), blended(kStripBackground, kTick, covered), 1.5)
          << number << " at " << along;
    }
  }
}

TEST_P(HeaderStrip, TicksEndOnePointBeforeTheEdge) {
  const Strip picture = strip(4, 0.0, 64);
  EXPECT_GT(picture.grey(56.0, 33.5), kStripBackground + 20);
  EXPECT_GT(picture.grey(56.0, 36.4), kStripBackground + 20);
  EXPECT_EQ(picture.grey(56.0, 37.75), kBorder);
}

TEST_P(HeaderStrip, EveryEighthNumberIsBoldAndBrighter) {
  const Strip picture = strip(18, 0.0, 18 * 16);
  for (const int number : {8, 16}) {
    const Ink ink = inkBetween(picture, 16.0 * (number - 1), 16.0 * number);
    EXPECT_GT(ink.brightest, kPlain + 20) << number;
    EXPECT_LE(ink.brightest, kAccent) << number;
  }
  for (const int number : {1, 4, 7, 9, 12, 17}) {
    const Ink ink = inkBetween(picture, 16.0 * (number - 1), 16.0 * number);
    EXPECT_GT(ink.brightest, kStripBackground + 30) << number;
    EXPECT_LE(ink.brightest, kPlain) << number;
  }
}

TEST_P(HeaderStrip, ACountOfOneShowsOneLabelWithoutTick) {
  const Strip picture = strip(1, 0.0, 200);
  EXPECT_GT(inkBetween(picture, 0.0, 16.0).weight, 0.0);
  EXPECT_EQ(inkBetween(picture, 16.0, 200.0).weight, 0.0);
  EXPECT_EQ(picture.grey(8.0, 35.0), kStripBackground);
}

TEST_P(HeaderStrip, ACountOfZeroShowsNoLabel) {
  EXPECT_EQ(inkBetween(strip(0, 0.0, 100), 0.0, 100.0).weight, 0.0);
}

TEST_P(HeaderStrip, FollowsTheScrollOffset) {
  const Strip still = strip(64, 0.0, 320);
  const Strip moved = strip(64, 32.0, 320);
  for (double along = 0.0; along < 320.0 - 32.0 - 16.0; along += still.pixel()) {
    for (const double across : {15.0, 19.0, 22.0, 35.0}) {
      ASSERT_EQ(moved.grey(along + 0.01, across), still.grey(along + 32.01, across))
          << along << ", " << across;
    }
  }
}

// At offset 24 the second label starts half a cell before the strip and is cut off there.
TEST_P(HeaderStrip, CutsTheLabelAtItsStart) {
  const Strip picture = strip(64, 24.0, 320);
  const Strip still = strip(64, 0.0, 320);
  for (double along = 0.0; along < 8.0; along += picture.pixel()) {
    for (double across = 0.5; across < 32.0; across += 1.0) {
      ASSERT_EQ(picture.grey(along + 0.01, across), still.grey(along + 24.01, across)) << along;
    }
  }
  // The tick of number 4 is in the middle of its cell.
  EXPECT_GT(picture.grey(3 * 16 - 24 + 8.0, 35.0), kStripBackground + 20);
}

std::string stripName(const ::testing::TestParamInfo<MakeStrip>& strip) {
  return strip.param == &columns ? "columns" : "rows";
}

INSTANTIATE_TEST_SUITE_P(Strips, HeaderStrip, ::testing::Values(&columns, &rows), stripName);

TEST(ColumnHeader, CentresLabelsOnTheirColumns) {
  const Strip picture = columns(9, 0.0, 160);
  for (int number = 1; number <= 7; ++number) {
    const Ink ink = inkBetween(picture, 16.0 * (number - 1), 16.0 * number);
    EXPECT_NEAR((ink.first + ink.last) / 2.0, 16.0 * number - 8.0, 1.5) << number;
  }
}

// The labels of a column strip, each centred by its own measured width, whatever that is.
QImage centredLabels(int first, int count) {
  const double scale = PatchMatrixColHeader().devicePixelRatioF();
  QImage picture(QSize(16 * count, 38) * scale, QImage::Format_RGB32);
  picture.setDevicePixelRatio(scale);
  picture.fill(QColor(kStripBackground, kStripBackground, kStripBackground));
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  for (int label = 0; label < count; ++label) {
    const bool accent = (first + label) % 8 == 0;
    const int level = accent ? kAccent : kPlain;
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(8);
    font.setWeight(accent ? QFont::Bold : QFont::Normal);
    const QFontMetricsF metrics(font);
    const QString text = QString::number(first + label);
    painter.setFont(font);
    painter.setPen(QColor(level, level, level));
    painter.drawText(QPointF(16.0 * label + (16.0 - metrics.horizontalAdvance(text)) / 2.0,
                             (38.0 - metrics.height()) / 2.0 + metrics.ascent()),
                     text);
  }
  return picture;
}

class WideLabels : public ::testing::TestWithParam<int> {};

TEST_P(WideLabels, AreCentredByTheirMeasuredWidth) {
  constexpr int kLabels = 16;
  const int first = GetParam();
  // Two more labels at each end: labels wider than a cell extend into their neighbours.
  const Strip strip = columns(20000, (first - 3) * 16.0, 16 * (kLabels + 4));
  const QImage expected = centredLabels(first - 2, kLabels + 4);
  const int scaled16 = qRound(16.0 * strip.picture.devicePixelRatio());
  // Above the ticks.
  const QRect labels(2 * scaled16, 0, kLabels * scaled16, 2 * scaled16);
  EXPECT_EQ(firstDifference(strip.picture.copy(labels), expected.copy(labels)), QString());
}

INSTANTIATE_TEST_SUITE_P(Digits, WideLabels, ::testing::Values(100, 112, 1000, 10000));

TEST(ColumnHeader, TicksAreFourPointsLong) {
  const Strip picture = columns(4, 0.0, 64);
  EXPECT_EQ(picture.grey(56.0, 32.2), kStripBackground);
  EXPECT_GT(picture.grey(56.0, 33.4), kStripBackground + 20);
}

TEST(ColumnHeader, CentresLabelsInItsHeight) {
  const Strip picture = columns(1, 0.0, 16);
  double first = 38.0;
  double last = 0.0;
  const double pixel = picture.pixel();
  for (int step = 0; step < qFloor(32.5 / pixel); ++step) {
    for (int line = 0; line < picture.length(); ++line) {
      if (picture.grey((line + 0.5) * pixel, (step + 0.5) * pixel) > kStripBackground + 30) {
        first = std::min(first, step * pixel);
        last = std::max(last, (step + 1) * pixel);
      }
    }
  }
  EXPECT_NEAR((first + last) / 2.0, 19.0, 2.0);
}

TEST(RowHeader, EndsLabelsFourPointsBeforeTheEdge) {
  PatchMatrixRowHeader header(QRect(0, 0, 38, 16 * 16));
  const QImage picture = grabbed(header);
  const double pixel = 1.0 / picture.devicePixelRatio();
  for (const int number : {1, 3, 5, 10, 15}) {
    double last = 0.0;
    for (int column = 0; column < qFloor(37.0 / pixel); ++column) {
      for (int line = qRound(16.0 * (number - 1) / pixel); line < qRound(16.0 * number / pixel); ++line) {
        const int level = greyAt(picture, (column + 0.5) * pixel, (line + 0.5) * pixel);
        last = level > kStripBackground + 10 ? (column + 1) * pixel : last;
      }
    }
    EXPECT_LE(last, 34.0 + pixel) << number;
    EXPECT_GE(last, 31.0) << number;
  }
}

TEST(HeaderFields, StartAs64LabelsUnscrolled) {
  const PatchMatrixColHeader columnHeader;
  EXPECT_EQ(columnHeader.outputCount, 64);
  EXPECT_EQ(columnHeader.scrollOffset, 0.0);
  EXPECT_EQ(columnHeader.cs, 16.0);
  EXPECT_EQ(columnHeader.lH, 38.0);
  const PatchMatrixRowHeader rowHeader;
  EXPECT_EQ(rowHeader.inputCount, 64);
  EXPECT_EQ(rowHeader.scrollOffset, 0.0);
  EXPECT_EQ(rowHeader.cs, 16.0);
  EXPECT_EQ(rowHeader.lW, 38.0);
}

}  // namespace
}  // namespace tolvane
