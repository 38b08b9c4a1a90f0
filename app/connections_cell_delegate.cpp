#include "app/connections_cell_delegate.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QToolTip>

namespace tolvane {

bool ConnectionsCellDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                        const QStyleOptionViewItem& option, const QModelIndex& index) {
  if (event->type() != QEvent::ToolTip) return QStyledItemDelegate::helpEvent(event, view, option, index);
  const bool isCut = index.isValid() && sizeHint(option, index).width() > option.rect.width();
  QToolTip::showText(event->globalPos(), isCut ? index.data().toString() : QString(), view, option.rect);
  return true;
}

void ConnectionsCellDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  option->palette.setColor(QPalette::HighlightedText, option->palette.color(QPalette::Text));
  option->state &= ~QStyle::State_HasFocus;
}

}  // namespace tolvane
