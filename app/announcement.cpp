#include "app/announcement.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLabel>
#include <QTimer>

#include "app/required.h"

namespace tolvane {
namespace {

/// Fires at the end of the event-loop turn. A widget with an Announcement as its child is a notification.
class Announcement : public QTimer {
 public:
  explicit Announcement(QWidget& widget) : QTimer(&widget) {
    setSingleShot(true);
    callOnTimeout(&widget, [&widget] {
      // Screen readers say a notification when it is shown. Qt has an event for announcements only since 6.8.
      QAccessibleEvent shown(&widget, QAccessible::ObjectShow);
      QAccessible::updateAccessibility(&shown);
    });
  }

  static QPointer<Announcement> of(const QObject& widget) {
    for (QObject* const child : widget.children()) {
      if (auto* const announcement = dynamic_cast<Announcement*>(child)) return announcement;
    }
    return nullptr;
  }
};

class AccessibleNotification : public QAccessibleWidget {
 public:
  explicit AccessibleNotification(QWidget* widget) : QAccessibleWidget(widget, QAccessible::Notification) {}

  QString text(QAccessible::Text kind) const override {
    const auto* const label = qobject_cast<const QLabel*>(widget());
    return kind == QAccessible::Name && label != nullptr ? label->text() : QAccessibleWidget::text(kind);
  }
};

QAccessibleInterface* makeNotificationInterface(const QString& /*className*/, QObject* object) {
  if (!object->isWidgetType() || !Announcement::of(*object)) return nullptr;
  return new AccessibleNotification(static_cast<QWidget*>(object));
}

}  // namespace

void makeNotification(QWidget& widget) {
  QAccessible::installFactory(makeNotificationInterface);
  new Announcement(widget);
}

void announce(QWidget& notification) {
  required(Announcement::of(notification)).start(0);
}

}  // namespace tolvane
