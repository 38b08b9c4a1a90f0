#pragma once

#include <QAbstractScrollArea>
#include <QPointF>
#include <functional>

namespace tolvane {

class OverlayScroller;

/// A scroll view whose scroll bars float over the document and take no room from it. The document stands at
/// the top left; when it is smaller than the view the background shows around it. All of it [main-thread].
class OverlayScrollView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  explicit OverlayScrollView(const QRect& frame, QWidget* parent = nullptr);

  /// Takes the widget that is scrolled, once; it becomes a child of the viewport.
  void setDocumentView(QWidget* document);
  /// Resizes the document. A scroll position beyond its new end moves back to that end.
  void setDocumentSize(const QSize& size);

  /// The point of the document at the top left of the visible area, in points.
  [[nodiscard]] QPoint contentOrigin() const;
  /// Scrolls so that this point of the document stands at the top left, as far as the document reaches.
  void scrollTo(const QPoint& origin);
  /// Scrolls by as little as shows the rectangle of the document.
  void reveal(const QRect& area);

  /// Called when the visible area has moved over the document, before anything is painted; may be empty.
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
  QPointF wheelRest_;  // what the wheel has turned and not yet made a whole point, points
};

}  // namespace tolvane
