#pragma once

#include <QRect>
#include <QString>

class QHelpEvent;
class QWidget;

namespace tolvane {

/// Shows the text at the event's place until the pointer leaves `area` of the widget. Never takes the text
/// for rich text: names from outside may look like it. [main-thread]
void showPlainToolTip(const QHelpEvent& event, const QString& text, QWidget* widget, const QRect& area);

}  // namespace tolvane
