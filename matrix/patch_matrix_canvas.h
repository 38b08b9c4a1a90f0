#pragma once

#include <QPointer>
#include <QWidget>
#include <cstdint>
#include <functional>

#include "matrix/cell_tiles.h"
#include "matrix/channel_names.h"
#include "matrix/matrix_geometry.h"
#include "matrix/route_key.h"

class QHelpEvent;

namespace tolvane {

/// The grid of route cells, the scrolling content of PatchMatrixView. The view writes the fields and then
/// requests a redraw. Draws only the cells that meet the area to be painted. All of it [main-thread].
class PatchMatrixCanvas : public QWidget {
  Q_OBJECT

 public:
  explicit PatchMatrixCanvas(const QRect& frame, QWidget* parent = nullptr);
  explicit PatchMatrixCanvas(QWidget* parent = nullptr);

  /// Called with the zero-based (row, column) of a cell that the user toggles. May be empty.
  std::function<void(std::int64_t, std::int64_t)> onToggled;
  std::int64_t inputCount = 64;   // rows
  std::int64_t outputCount = 64;  // columns
  RouteKeys connections;          // the cells shown as active
  const double cs = kCellSize;

  // The channels' names, for the cells' texts.
  ChannelNamer inputNamer;
  ChannelNamer outputNamer;

  /// The text of a cell for tool tips and assistive technology.
  [[nodiscard]] QString cellText(const MatrixCell& cell) const {
    return cellName(cell, inputNamer, outputNamer);
  }

  // The strips with the labels of the cells, for assistive technology; may be null.
  QPointer<QWidget> columnLabels;
  QPointer<QWidget> rowLabels;

  /// Called when the focus cell has moved. The callee makes it visible. May be empty.
  std::function<void()> onFocusMoved;

  [[nodiscard]] bool contains(const MatrixCell& cell) const noexcept;
  /// True when the cell's route is among the connections.
  [[nodiscard]] bool isActive(const MatrixCell& cell) const;

  /// Calls onToggled if the cell is in the grid.
  void toggle(const MatrixCell& cell);

  /// The cell that keys act on, always within the grid.
  [[nodiscard]] MatrixCell focusCell() const noexcept;
  /// Moves the focus cell, clamped to the grid, and calls onFocusMoved.
  void moveFocusTo(const MatrixCell& cell);

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void draw(QPainter& painter, const QRectF& area);
  void drawCells(QPainter& painter, const QRectF& area, const VisibleRange& columns,
                 const VisibleRange& rows);
  void drawTiles(QPainter& painter, const QRectF& area, const VisibleRange& columns,
                 const VisibleRange& rows);
  [[nodiscard]] CellLook look(std::int64_t row, std::int64_t column) const;
  void drawFocusRing(QPainter& painter) const;
  void updateFocusRing();
  void showToolTip(const QHelpEvent& event);

  CellTiles tiles_;
  MatrixCell focus_;
  bool focusVisible_ = false;  // the ring shows only after a key was used
};

}  // namespace tolvane
