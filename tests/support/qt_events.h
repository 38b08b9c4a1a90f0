#pragma once

#include <QPoint>
#include <QPointF>
#include <QWidget>

namespace tolvane {

/// Shows the widget as the active window, so that it can have the keyboard focus. Returns false on failure.
bool showActive(QWidget& window);

/// Sends a button press (by default the left one) at a point of the widget, with its fractional part.
void pressAt(QWidget& widget, const QPointF& point, Qt::MouseButton button = Qt::LeftButton);

/// Clicks at a point of the widget through its window, so that the topmost widget there gets the click.
void clickThroughWindow(QWidget& widget, const QPoint& point);

/// Moves the pointer over a point of the widget through its window.
void hoverThroughWindow(QWidget& widget, const QPoint& point);

/// Turns the wheel over the widget; 120 is a notch, up and left are positive. As on the platform, an event
/// that the widget ignores goes to its parents. Returns true if a widget accepted it.
bool turnWheel(QWidget& widget, const QPoint& angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

}  // namespace tolvane
