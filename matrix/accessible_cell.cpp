#include "matrix/accessible_cell.h"

namespace tolvane {

AccessibleCell::AccessibleCell(PatchMatrixCanvas* canvas, const MatrixCell& cell)
    : canvas_(canvas), cell_(cell) {}

bool AccessibleCell::isValid() const {
  return canvas_ && canvas_->contains(cell_);
}

QObject* AccessibleCell::object() const {
  return nullptr;
}

QWindow* AccessibleCell::window() const {
  return isValid() ? canvas_->window()->windowHandle() : nullptr;
}

QAccessibleInterface* AccessibleCell::parent() const {
  return QAccessible::queryAccessibleInterface(canvas_.data());
}

QAccessibleInterface* AccessibleCell::child(int /*index*/) const {
  return nullptr;
}

QAccessibleInterface* AccessibleCell::childAt(int /*x*/, int /*y*/) const {
  return nullptr;
}

int AccessibleCell::childCount() const {
  return 0;
}

int AccessibleCell::indexOfChild(const QAccessibleInterface* /*child*/) const {
  return -1;
}

QRect AccessibleCell::rect() const {
  if (!isValid()) {
    return {};
  }
  const QRect square = cellRect(cell_);
  return {canvas_->mapToGlobal(square.topLeft()), square.size()};
}

QString AccessibleCell::text(QAccessible::Text kind) const {
  return kind == QAccessible::Name && canvas_ ? canvas_->cellText(cell_) : QString();
}

void AccessibleCell::setText(QAccessible::Text /*kind*/, const QString& /*text*/) {}

QAccessible::Role AccessibleCell::role() const {
  return QAccessible::Cell;
}

QAccessible::State AccessibleCell::state() const {
  QAccessible::State state;
  const PatchMatrixCanvas* canvas = canvas_.data();
  if (canvas == nullptr || !canvas->contains(cell_)) {
    state.invalid = true;
    return state;
  }
  state.checkable = true;
  state.checked = canvas->isActive(cell_);
  state.focusable = true;
  state.focused = canvas->hasFocus() && canvas->focusCell() == cell_;
  state.invisible = !canvas->isVisible();
  state.offscreen = !canvas->visibleRegion().intersects(cellRect(cell_));
  return state;
}

void* AccessibleCell::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TableCellInterface) {
    return static_cast<QAccessibleTableCellInterface*>(this);
  }
  if (type == QAccessible::ActionInterface) {
    return static_cast<QAccessibleActionInterface*>(this);
  }
  return nullptr;
}

bool AccessibleCell::isSelected() const {
  return false;
}

QList<QAccessibleInterface*> AccessibleCell::columnHeaderCells() const {
  return canvas_ ? headerCell(canvas_->columnLabels, cell_.column) : QList<QAccessibleInterface*>();
}

QList<QAccessibleInterface*> AccessibleCell::rowHeaderCells() const {
  return canvas_ ? headerCell(canvas_->rowLabels, cell_.row) : QList<QAccessibleInterface*>();
}

QList<QAccessibleInterface*> AccessibleCell::headerCell(QWidget* strip, std::int64_t index) const {
  QAccessibleInterface* header = QAccessible::queryAccessibleInterface(strip);
  QAccessibleInterface* label = header == nullptr ? nullptr : header->child(static_cast<int>(index));
  return label == nullptr ? QList<QAccessibleInterface*>() : QList<QAccessibleInterface*>{label};
}

int AccessibleCell::columnIndex() const {
  return static_cast<int>(cell_.column);
}

int AccessibleCell::rowIndex() const {
  return static_cast<int>(cell_.row);
}

int AccessibleCell::columnExtent() const {
  return 1;
}

int AccessibleCell::rowExtent() const {
  return 1;
}

QAccessibleInterface* AccessibleCell::table() const {
  return parent();
}

QStringList AccessibleCell::actionNames() const {
  return {toggleAction(), pressAction(), setFocusAction()};
}

void AccessibleCell::doAction(const QString& name) {
  if (!isValid()) {
    return;
  }
  if (name == toggleAction() || name == pressAction()) {
    canvas_->toggle(cell_);
  } else if (name == setFocusAction()) {
    canvas_->setFocus(Qt::OtherFocusReason);
    canvas_->moveFocusTo(cell_);
  }
}

QStringList AccessibleCell::keyBindingsForAction(const QString& /*name*/) const {
  return {};
}

}  // namespace tolvane
