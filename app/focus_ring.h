// The ring that shows which control gets the keys.
#pragma once

#include <QWidget>

namespace tolvane {

/// Draws the ring along the inside of a frame's edge.
void drawFocusRing(QPainter& painter, const QRectF& frame, qreal cornerRadius);

/// The ring of a control that cannot draw one around its parts: it lies over the whole of `frame` while
/// `control`, a part of it, has the focus, and lets the pointer through. Belongs to `frame`. [main-thread]
class FocusRing : public QWidget {
  Q_OBJECT

 public:
  FocusRing(QWidget* control, QWidget* frame);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace tolvane
