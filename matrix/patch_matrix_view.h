#pragma once

#include <QWidget>
#include <cstdint>
#include <functional>
#include <vector>

#include "core/patch/patch_connection.h"
#include "matrix/channel_names.h"
#include "matrix/matrix_geometry.h"
#include "matrix/route_key.h"

namespace tolvane {

class OverlayScrollView;
class PatchMatrixCanvas;
class PatchMatrixColHeader;
class PatchMatrixRowHeader;

/// The patch matrix: a scrolling grid of route cells, inputs as rows and outputs as columns. Two strips
/// beside it show the channel numbers. Shows the routes it is given and reports clicks; never changes the
/// route list. All of it [main-thread].
class PatchMatrixView : public QWidget {
  Q_OBJECT

 public:
  static constexpr double cellSize = kCellSize;
  static constexpr double labelW = kLabelWidth;
  static constexpr double labelH = kLabelHeight;

  /// A matrix with this geometry in its parent, in Qt's coordinates. Shows 64 × 64 cells without routes until
  /// configured.
  explicit PatchMatrixView(const QRect& frame, QWidget* parent = nullptr);
  /// The same with Qt's default geometry, for form loaders.
  explicit PatchMatrixView(QWidget* parent = nullptr);
  ~PatchMatrixView() override;

  /// Shows these channel counts and routes. A count below 1 becomes 1. Each route is an active cell, whatever
  /// its gain and active flag. Routes beyond the counts are not drawn. The scroll position stays, within the
  /// new limits.
  void configure(std::int64_t inputs, std::int64_t outputs, const std::vector<PatchConnection>& routes);

  /// From now on, tool tips and assistive technology get these names beside the channels' numbers. The
  /// functions are called for each text and must be quick. Nothing that is drawn changes.
  void setChannelNames(const ChannelNamer& inputs, const ChannelNamer& outputs);

  /// Called with (input, output), zero-based, when a cell is clicked or toggled by key or by assistive
  /// technology. May be empty. May call configure.
  std::function<void(std::int64_t, std::int64_t)> onConnectionToggled;

  std::int64_t inputCount = 64;   // rows shown
  std::int64_t outputCount = 64;  // columns shown
  RouteKeys connections;          // the routes shown

  // The parts, made once at construction and owned as children.
  OverlayScrollView* scrollView = nullptr;
  PatchMatrixCanvas* canvas = nullptr;
  PatchMatrixColHeader* colHeader = nullptr;
  PatchMatrixRowHeader* rowHeader = nullptr;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void build();
  void buildCorner();
  QWidget* buildCaption(const QString& text, const QRect& frame);
  void buildCanvas();
  void forward(std::int64_t row, std::int64_t column) const;
  void didScroll();
  void placeScrollingParts();
  void placeCorner();

  struct FixedPart {
    QWidget* widget;
    QRect frame;  // as built, from the container's lower left corner
  };
  std::vector<FixedPart> corner_;
};

}  // namespace tolvane
