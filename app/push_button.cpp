#include "app/push_button.h"

#include <QKeyEvent>

namespace tolvane {
namespace {

QKeyEvent withSpaceForEnter(const QKeyEvent& event) {
  const bool isEnter = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
  return {event.type(),         isEnter ? static_cast<int>(Qt::Key_Space) : event.key(),
          event.modifiers(),    event.text(),
          event.isAutoRepeat(), static_cast<quint16>(event.count())};
}

}  // namespace

void PushButton::keyPressEvent(QKeyEvent* event) {
  QKeyEvent translated = withSpaceForEnter(*event);
  QPushButton::keyPressEvent(&translated);
  event->setAccepted(translated.isAccepted());
}

void PushButton::keyReleaseEvent(QKeyEvent* event) {
  QKeyEvent translated = withSpaceForEnter(*event);
  QPushButton::keyReleaseEvent(&translated);
  event->setAccepted(translated.isAccepted());
}

}  // namespace tolvane
