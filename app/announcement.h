// What a screen reader is told as it happens.
#pragma once

#include <QWidget>

namespace tolvane {

/// Makes the widget a notification to assistive technology, by its accessible name or, a label, by its text.
/// To be called as soon as the widget is made, before anything asks what it is. [main-thread]
void makeNotification(QWidget& widget);

/// The same, for where the widget is made.
template <class Widget>
[[nodiscard]] Widget* asNotification(Widget* widget) {
  makeNotification(*widget);
  return widget;
}

/// Has screen readers say the notification once the present turn of the event loop is over: a text that
/// another one has replaced by then is not said. Saying the same text again is fine. [main-thread]
void announce(QWidget& notification);

}  // namespace tolvane
