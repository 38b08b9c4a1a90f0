#pragma once

#include <QScrollBar>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>

namespace tolvane {

/// The visible part of a floating scroll bar: a knob over the edge of the grid that shows the place of a
/// scroll bar's value, can be dragged, and fades away when it is left alone. Beside the knob clicks reach the
/// grid. All of it [main-thread].
class OverlayKnob : public QWidget {
  Q_OBJECT

 public:
  /// The bar, which must outlive the knob, holds range and value; the knob lies in view, at its right or
  /// lower edge by the bar's direction. Hidden until it is flashed.
  OverlayKnob(QScrollBar& bar, QWidget& view);

  /// Shows the knob, if there is anything to scroll, and lets it fade a moment after the last call.
  void flash();

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
  void place();
  void fade();

  QScrollBar& bar_;
  QWidget& view_;
  QTimer rest_;
  QVariantAnimation fading_;
  double opacity_ = 1.0;
  bool dragged_ = false;
  int grip_ = 0;  // where the knob was taken, points from its start
};

}  // namespace tolvane
