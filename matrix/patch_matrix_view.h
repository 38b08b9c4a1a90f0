#pragma once

#include <QWidget>
#include <cstdint>
#include <functional>
#include <vector>

#include "core/patch_connection.h"
#include "matrix/route_key.h"

namespace tolvane {

class OverlayScrollView;
class PatchMatrixCanvas;
class PatchMatrixColHeader;
class PatchMatrixRowHeader;

/// The patch matrix as the rest of the window sees it: a scrolling grid of route cells, inputs as rows and
/// outputs as columns, with the channel numbers in two strips that stay beside it. It shows the routes it is
/// given and reports clicks; it never changes the route list itself. All of it [main-thread].
class PatchMatrixView : public QWidget {
  Q_OBJECT

 public:
  static constexpr double cellSize = 16.0;  // edge of one cell, points
  static constexpr double labelW = 38.0;    // width of the row strip and the corner, points
  static constexpr double labelH = 38.0;    // height of the column strip and the corner, points

  /// A matrix with this geometry in its parent, as Qt counts; 64 × 64 without routes until configured.
  explicit PatchMatrixView(const QRect& frame, QWidget* parent = nullptr);
  /// The same with Qt's own first geometry: what a form loader calls.
  explicit PatchMatrixView(QWidget* parent = nullptr);
  ~PatchMatrixView() override;

  /// Shows this many channels (a count below 1 is raised to 1) and these routes, each as an active cell
  /// whatever its gain and active flag; routes beyond the counts are not drawn. The scroll position stays, as
  /// far as the new size lets it.
  void configure(std::int64_t inputs, std::int64_t outputs, const std::vector<PatchConnection>& routes);

  /// Called with (input, output), zero-based, when a cell is clicked or toggled by key or by assistive
  /// technology; may be empty. It may call configure.
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
    QRect frame;  // from the container's lower left corner, as first built
  };
  std::vector<FixedPart> corner_;
};

}  // namespace tolvane
