#pragma once

#include <QScrollBar>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>

namespace tolvane {

/// A floating scroll bar: a narrow strip over the right or the lower edge of a view, and in it a knob that
/// shows which part of the whole is seen. The knob can be dragged; a click beside it scrolls by what is seen
/// at once. The strip is there while there is more than is seen. Its knob is faint at rest, and bright while
/// the pointer is on the strip and for a moment after each scrolling. All of it [main-thread].
class OverlayScroller : public QWidget {
  Q_OBJECT

 public:
  /// The bar, which must outlive the strip, holds range and value; the strip lies in view, at its right or
  /// lower edge by the bar's direction.
  OverlayScroller(QScrollBar& bar, QWidget& view);

  /// Puts the strip and its knob where they belong after the view or the range has changed.
  void place();
  /// Where the knob lies in the strip, points.
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
  int grip_ = 0;  // where the knob was taken, points from its start
};

}  // namespace tolvane
