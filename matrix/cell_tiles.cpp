#include "matrix/cell_tiles.h"

#include "matrix/device_pixels.h"

namespace tolvane {
namespace {

constexpr std::array kLooks = {CellLook::active, CellLook::diagonal, CellLook::offDiagonal};

std::size_t tileIndex(CellLook look, CellNeighbours neighbours) {
  return static_cast<std::size_t>(look) * 4U + (neighbours.right ? 2U : 0U) + (neighbours.below ? 1U : 0U);
}

QImage renderTile(int pixels, double scale, double cellSize, CellLook look, CellNeighbours neighbours) {
  QImage tile(pixels, pixels, QImage::Format_RGB32);
  tile.setDevicePixelRatio(scale);
  QPainter painter(&tile);
  CellPainter cell(painter, cellSize);
  const QRectF square(0.0, 0.0, cellSize, cellSize);
  cell.paintBackground(square);
  cell.paintGrid(square, {0, neighbours.right ? 1 : 0}, {0, neighbours.below ? 1 : 0});
  cell.paintCell({0.0, 0.0}, look);
  return tile;
}

}  // namespace

bool CellTiles::prepare(const QTransform& toDevice, double cellSize) {
  const double scale = toDevice.m11();
  const bool onPixels = toDevice.type() <= QTransform::TxScale && toDevice.m22() == scale && scale > 0.0 &&
                        isWholePixel(scale * cellSize) && isWholePixel(toDevice.dx()) &&
                        isWholePixel(toDevice.dy());
  if (onPixels && scale != scale_) {
    render(scale, cellSize);
  }
  return onPixels;
}

void CellTiles::render(double scale, double cellSize) {
  const int pixels = qRound(scale * cellSize);
  for (const CellLook look : kLooks) {
    for (const CellNeighbours neighbours :
         {CellNeighbours{false, false}, {false, true}, {true, false}, {true, true}}) {
      tiles_.at(tileIndex(look, neighbours)) = renderTile(pixels, scale, cellSize, look, neighbours);
    }
  }
  scale_ = scale;
}

void CellTiles::paint(QPainter& painter, const QPointF& corner, CellLook look,
                      CellNeighbours neighbours) const {
  painter.drawImage(corner, tiles_.at(tileIndex(look, neighbours)));
}

}  // namespace tolvane
