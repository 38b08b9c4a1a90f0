#include "app/window_icon.h"

#include <QPainter>
#include <QPixmap>
#include <array>

namespace tolvane {
namespace {

constexpr double kDesignSize = 256.0;
constexpr int kCells = 4;                                      // in each direction
constexpr std::array<int, kCells> kLitColumns = {0, 2, 3, 1};  // lit cell of each row

void drawCell(QPainter& painter, int row, int column) {
  const bool isLit = kLitColumns.at(static_cast<std::size_t>(row)) == column;
  painter.setBrush(isLit ? QColor(0x2e, 0xd9, 0x61) : QColor(0x30, 0x30, 0x30));
  painter.setPen(isLit ? QPen(Qt::NoPen) : QPen(QColor(0x47, 0x47, 0x47), 2.0));
  painter.drawRoundedRect(QRectF(36.0 + 48.0 * column, 36.0 + 48.0 * row, 40.0, 40.0), 7.0, 7.0);
}

QPixmap drawnIcon(int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(size / kDesignSize, size / kDesignSize);
  painter.setBrush(QColor(0x1c, 0x1c, 0x1c));
  painter.setPen(QPen(QColor(0x40, 0x40, 0x40), 4.0));
  painter.drawRoundedRect(QRectF(8.0, 8.0, 240.0, 240.0), 48.0, 48.0);
  for (int row = 0; row < kCells; ++row) {
    for (int column = 0; column < kCells; ++column) drawCell(painter, row, column);
  }
  return pixmap;
}

}  // namespace

QIcon windowIcon() {
  QIcon icon;
  // The display gets all sizes before the window appears. A larger one would take a millisecond.
  for (const int size : {16, 32, 48, 64, 128}) icon.addPixmap(drawnIcon(size));
  return icon;
}

}  // namespace tolvane
