#include "matrix/accessible_strip.h"

#include <QWidget>
#include <algorithm>
#include <limits>
#include <utility>

namespace tolvane {
namespace {

class Label : public QAccessibleInterface {
 public:
  // Strip and contents outlive the label: the strip's interface deletes its labels before itself.
  Label(QWidget* strip, const StripContents& contents, std::int64_t index)
      : strip_(strip), contents_(contents), index_(index) {}

  [[nodiscard]] std::int64_t index() const { return index_; }

  bool isValid() const override { return index_ < contents_.count(); }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return strip_->window()->windowHandle(); }
  QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(strip_); }
  QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
  QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
  QRect rect() const override {
    const QRect place = isValid() ? contents_.place(index_) : QRect();
    return isValid() ? QRect(strip_->mapToGlobal(place.topLeft()), place.size()) : place;
  }
  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Name ? contents_.name(index_) : QString();
  }
  void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}
  QAccessible::Role role() const override { return contents_.labelRole; }
  QAccessible::State state() const override {
    QAccessible::State state;
    state.invalid = !isValid();
    state.readOnly = true;
    state.offscreen = isValid() && !strip_->rect().intersects(contents_.place(index_));
    return state;
  }

 private:
  QWidget* strip_;
  const StripContents& contents_;
  std::int64_t index_;
};

}  // namespace

AccessibleStrip::AccessibleStrip(QWidget* strip, const QString& name, StripContents contents)
    : QAccessibleWidget(strip, QAccessible::List, name), contents_(std::move(contents)) {}

int AccessibleStrip::childCount() const {
  return static_cast<int>(std::min<std::int64_t>(contents_.count(), std::numeric_limits<int>::max()));
}

QAccessibleInterface* AccessibleStrip::child(int index) const {
  if (index < 0 || index >= childCount()) {
    return nullptr;
  }
  return labels_.at(index, [&] { return new Label(widget(), contents_, index); });
}

int AccessibleStrip::indexOfChild(const QAccessibleInterface* child) const {
  const auto* label = dynamic_cast<const Label*>(child);
  return label != nullptr && label->isValid() && label->parent() == this ? static_cast<int>(label->index())
                                                                         : -1;
}

QAccessibleInterface* AccessibleStrip::childAt(int x, int y) const {
  const QPoint point = widget()->mapFromGlobal(QPoint(x, y));
  for (int index = 0; widget()->rect().contains(point) && index < childCount(); ++index) {
    if (contents_.place(index).contains(point)) {
      return child(index);
    }
  }
  return nullptr;
}

}  // namespace tolvane
