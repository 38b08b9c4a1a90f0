#pragma once

#include <QAccessibleWidget>
#include <cstdint>
#include <functional>

#include "matrix/accessible_children.h"

namespace tolvane {

/// What a header strip reports to assistive technology.
struct StripContents {
  std::function<std::int64_t()> count;        // number of labels
  std::function<QString(std::int64_t)> name;  // name of a label, by zero-based index
  std::function<QRect(std::int64_t)> place;   // rectangle of a label in the strip, points
  QAccessible::Role labelRole = QAccessible::ColumnHeader;
};

/// A header strip for assistive technology: a list of labels. The labels are also the headers of the grid's
/// cells. A label's object is made on the first request. All of it [main-thread].
class AccessibleStrip : public QAccessibleWidget {
 public:
  AccessibleStrip(QWidget* strip, const QString& name, StripContents contents);

  /// Calls visit for every label object that exists.
  void forEachLabel(const std::function<void(QAccessibleInterface&)>& visit) const { labels_.forEach(visit); }
  /// Deletes the objects of labels that the strip no longer has.
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
