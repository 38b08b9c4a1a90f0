#pragma once

#include <QWidget>
#include <cstdint>

#include "matrix/channel_names.h"
#include "matrix/matrix_geometry.h"

namespace tolvane {

class HeaderStyle;

/// The strip of output numbers above the grid, counted from one. PatchMatrixView writes the fields and then
/// requests a redraw. All of it [main-thread].
class PatchMatrixColHeader : public QWidget {
  Q_OBJECT

 public:
  explicit PatchMatrixColHeader(const QRect& frame, QWidget* parent = nullptr);
  explicit PatchMatrixColHeader(QWidget* parent = nullptr);

  std::int64_t outputCount = 64;
  ChannelNamer namer;         // the channels' names, for tool tips and assistive technology
  double scrollOffset = 0.0;  // content x at the left edge of the visible grid, points
  const double cs = kCellSize;
  const double lH = kLabelHeight;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void drawColumn(QPainter& painter, const HeaderStyle& style, std::int64_t column) const;
};

}  // namespace tolvane
