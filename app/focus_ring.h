// The ring that shows which control has the keyboard focus.
#pragma once

#include <QWidget>

namespace tolvane {

/// Draws the ring along the inside of a frame's edge.
void drawFocusRing(QPainter& painter, const QRectF& frame, qreal cornerRadius);

/// Focus ring for a control that cannot draw one around its parts. Covers the whole of `frame` while
/// `control`, a part of it, has the focus. Lets the pointer through. `frame` owns the ring. [main-thread]
class FocusRing : public QWidget {
  Q_OBJECT

 public:
  FocusRing(QWidget* control, QWidget* frame);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace tolvane
