#pragma once

#include <QAccessibleWidget>
#include <cstdint>
#include <functional>

#include "matrix/accessible_children.h"

namespace tolvane {

/// What a header strip tells about itself to assistive technology.
struct StripContents {
  std::function<std::int64_t()> count;        // labels
  std::function<QString(std::int64_t)> name;  // of a label, by its zero-based index
  std::function<QRect(std::int64_t)> place;   // of a label in the strip, points
  QAccessible::Role labelRole = QAccessible::ColumnHeader;
};

/// A header strip to assistive technology: a list of labels, which also are the headers of the grid's cells.
/// Labels come into being when they are asked for. All of it [main-thread].
class AccessibleStrip : public QAccessibleWidget {
 public:
  AccessibleStrip(QWidget* strip, const QString& name, StripContents contents);

  /// Forgets the labels that are no more.
  void dropInvalid() { labels_.dropInvalid(); }

  int childCount() const override;
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override;

 private:
  StripContents contents_;
  mutable AccessibleChildren labels_;
};

}  // namespace tolvane
