#include "matrix/plain_tool_tip.h"

#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>

namespace tolvane {

void showPlainToolTip(const QHelpEvent& event, const QString& text, QWidget* widget, const QRect& area) {
  // A tool tip has no setting for this: text that looks rich must be escaped, and other text must not.
  const QString plain =
      Qt::mightBeRichText(text) ? text.toHtmlEscaped().prepend(u"<span>").append(u"</span>") : text;
  QToolTip::showText(event.globalPos(), plain, widget, area);
}

}  // namespace tolvane
