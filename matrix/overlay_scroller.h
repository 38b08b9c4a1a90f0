#pragma once

#include <QScrollBar>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>

namespace tolvane {

/// A floating scroll bar: a narrow strip over the right or lower edge of a view, with a knob that shows which
/// part of the document is visible. The user can drag the knob; a click beside it scrolls by one page. The
/// strip is visible only if there is something to scroll. The knob is faint at rest. It is bright while the
/// pointer is on the strip and for a moment after each scroll. All of it [main-thread].
class OverlayScroller : public QWidget {
  Q_OBJECT

 public:
  /// The bar holds range and value and must outlive the strip. The strip lies in `view`, at its right edge
  /// for a vertical bar, at its lower edge for a horizontal one.
  OverlayScroller(QScrollBar& bar, QWidget& view);

  /// Places the strip and its knob. Call it after the view or the range has changed.
  void place();
  /// The knob's rectangle in the strip, points.
  [[nodiscard]] QRect knobRect() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  [[nodiscard]] bool isVertical() const;
  [[nodiscard]] int along(const QPoint& point) const;
  [[nodiscard]] int trackLength() const;
  [[nodiscard]] int knobLength() const;
  [[nodiscard]] int knobStart() const;
  void brighten();
  void rest();

  QScrollBar& bar_;
  QWidget& view_;
  QTimer lull_;
  QVariantAnimation fading_;
  double brightness_ = 0.0;  // 0 at rest, 1 in use
  bool dragged_ = false;
  int grip_ = 0;  // where the knob is held, points from its start
};

}  // namespace tolvane
