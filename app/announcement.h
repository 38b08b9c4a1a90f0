// Notifications for screen readers.
#pragma once

#include <QWidget>

namespace tolvane {

/// Makes the widget a notification for assistive technology. A label is announced by its text, any other
/// widget by its accessible name. Call this right after construction, before anything queries the widget's
/// accessible interface. [main-thread]
void makeNotification(QWidget& widget);

/// Does the same and returns the widget, for use in the expression that constructs it.
template <class Widget>
[[nodiscard]] Widget* asNotification(Widget* widget) {
  makeNotification(*widget);
  return widget;
}

/// Screen readers say the notification at the end of the current event-loop turn. They say only the last text
/// of that turn. The same text may be announced again. [main-thread]
void announce(QWidget& notification);

}  // namespace tolvane
