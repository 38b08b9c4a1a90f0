#pragma once

#include <QAbstractScrollArea>
#include <QPointF>
#include <functional>

namespace tolvane {

class OverlayScroller;

/// A scroll view with scroll bars that float over the document and take no room from it. The document is at
/// the top left. If it is smaller than the view, the background shows around it. All of it [main-thread].
class OverlayScrollView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  explicit OverlayScrollView(const QRect& frame, QWidget* parent = nullptr);

  /// Sets the widget to scroll. It becomes a child of the viewport. Call once.
  void setDocumentView(QWidget* document);
  /// Resizes the document. A scroll position beyond its new end moves back to that end.
  void setDocumentSize(const QSize& size);

  /// The point of the document at the top left of the visible area, in points.
  [[nodiscard]] QPoint contentOrigin() const;
  /// Scrolls this point of the document to the top left, within the document's limits.
  void scrollTo(const QPoint& origin);
  /// Scrolls by the smallest distance that shows this rectangle of the document.
  void reveal(const QRect& area);

  /// Called when the scroll position has changed, before anything is painted. May be empty.
  std::function<void()> onBoundsChanged;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  void updateRanges();

  QWidget* document_ = nullptr;
  OverlayScroller* across_;  // children of the viewport, over the document
  OverlayScroller* down_;
  QPointF wheelRest_;  // fraction of a point left over from earlier wheel events, points
};

}  // namespace tolvane
