#pragma once

#include <QPoint>
#include <QPointF>
#include <QWidget>

namespace tolvane {

/// Shows the widget as the active window, so that it can have the keyboard focus. Returns whether it is.
bool showActive(QWidget& window);

/// Sends a press of the left button at a point of the widget, fractions and all.
void pressAt(QWidget& widget, const QPointF& point, Qt::MouseButton button = Qt::LeftButton);

/// Clicks at a point of the widget through its window, so that whatever lies there on top is hit.
void clickThroughWindow(QWidget& widget, const QPoint& point);

/// Moves the pointer over a point of the widget through its window.
void hoverThroughWindow(QWidget& widget, const QPoint& point);

/// Turns the wheel over the widget; 120 is a notch, up and left are positive. What the widget leaves goes to
/// its parents, as the platform does it. Returns whether anybody took it.
bool turnWheel(QWidget& widget, const QPoint& angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

}  // namespace tolvane
