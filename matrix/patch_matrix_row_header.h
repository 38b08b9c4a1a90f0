#pragma once

#include <QWidget>
#include <cstdint>

#include "matrix/channel_names.h"
#include "matrix/matrix_geometry.h"

namespace tolvane {

class HeaderStyle;

/// The strip of input numbers left of the grid, counted from one. PatchMatrixView writes the fields and then
/// requests a redraw. All of it [main-thread].
class PatchMatrixRowHeader : public QWidget {
  Q_OBJECT

 public:
  explicit PatchMatrixRowHeader(const QRect& frame, QWidget* parent = nullptr);
  explicit PatchMatrixRowHeader(QWidget* parent = nullptr);

  std::int64_t inputCount = 64;
  ChannelNamer namer;         // the channels' names, for tool tips and assistive technology
  double scrollOffset = 0.0;  // content y at the top edge of the visible grid, points
  const double cs = kCellSize;
  const double lW = kLabelWidth;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void drawRow(QPainter& painter, const HeaderStyle& style, std::int64_t row) const;
};

}  // namespace tolvane
