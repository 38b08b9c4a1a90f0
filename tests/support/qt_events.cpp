#include "support/qt_events.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>

namespace tolvane {

bool showActive(QWidget& window) {
  window.show();
  window.activateWindow();
  return QTest::qWaitForWindowActive(&window);
}

void pressAt(QWidget& widget, const QPointF& point, Qt::MouseButton button) {
  const QPointF inWindow = point + QPointF(widget.mapTo(widget.window(), QPoint()));
  const QPointF onScreen = point + QPointF(widget.mapToGlobal(QPoint()));
  QMouseEvent event(QEvent::MouseButtonPress, point, inWindow, onScreen, button, button, Qt::NoModifier);
  QApplication::sendEvent(&widget, &event);
}

void clickThroughWindow(QWidget& widget, const QPoint& point) {
  QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                    widget.mapTo(widget.window(), point));
}

void hoverThroughWindow(QWidget& widget, const QPoint& point) {
  QTest::mouseMove(widget.window()->windowHandle(), widget.mapTo(widget.window(), point));
}

bool turnWheel(QWidget& widget, const QPoint& angle, Qt::KeyboardModifiers modifiers) {
  for (QWidget* receiver = &widget; receiver != nullptr; receiver = receiver->parentWidget()) {
    const QPointF point = QRectF(receiver->rect()).center();
    QWheelEvent event(point, receiver->mapToGlobal(point), QPoint(), angle, Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    if (QApplication::sendEvent(receiver, &event) && event.isAccepted()) {
      return true;
    }
  }
  return false;
}

}  // namespace tolvane
