#pragma once

#include <QStyledItemDelegate>

namespace tolvane {

/// Draws the cells of the connections table. A selected row keeps its text colours. Cells draw no focus: the
/// table as a whole shows it. Truncated text has a tool tip. [main-thread]
class ConnectionsCellDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

}  // namespace tolvane
