#pragma once

#include <QStyledItemDelegate>

namespace tolvane {

/// Draws the cells of the connections table. Their colours stay as they are in a selected row; the focus is
/// shown for the table as a whole; and what is cut has a tool tip. [main-thread]
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
