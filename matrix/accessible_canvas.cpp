#include "matrix/accessible_canvas.h"

#include <algorithm>
#include <limits>

#include "matrix/accessible_cell.h"

namespace tolvane {
namespace {

int asInt(std::int64_t value) {
  return static_cast<int>(std::min<std::int64_t>(value, std::numeric_limits<int>::max()));
}

}  // namespace

AccessibleCanvas::AccessibleCanvas(PatchMatrixCanvas* canvas)
    : QAccessibleWidget(canvas, QAccessible::Table) {}

PatchMatrixCanvas* AccessibleCanvas::canvas() const {
  return static_cast<PatchMatrixCanvas*>(widget());
}

std::vector<QAccessibleInterface*> AccessibleCanvas::changedCells(const RouteKeys& before) const {
  std::vector<QAccessibleInterface*> changed;
  cells_.forEach([&](QAccessibleInterface& child) {
    const MatrixCell& cell = static_cast<AccessibleCell&>(child).cell();
    if (before.contains(routeKey(cell.row, cell.column)) != canvas()->isActive(cell)) {
      changed.push_back(&child);
    }
  });
  return changed;
}

int AccessibleCanvas::childCount() const {
  std::int64_t cells = 0;
  const bool tooMany = __builtin_mul_overflow(canvas()->inputCount, canvas()->outputCount, &cells);
  return tooMany ? std::numeric_limits<int>::max() : asInt(cells);
}

QAccessibleInterface* AccessibleCanvas::child(int index) const {
  const std::int64_t columns = canvas()->outputCount;
  return index < 0 || columns < 1 ? nullptr : cellInterface({index / columns, index % columns});
}

int AccessibleCanvas::indexOfChild(const QAccessibleInterface* child) const {
  // Other interfaces may claim this parent. Only an AccessibleCell has an index.
  const auto* cell = dynamic_cast<const AccessibleCell*>(child);
  if (cell == nullptr || !cell->isValid() || cell->parent() != this) {
    return -1;
  }
  return asInt(cell->cell().row * canvas()->outputCount + cell->cell().column);
}

QAccessibleInterface* AccessibleCanvas::childAt(int x, int y) const {
  const QPoint point = canvas()->mapFromGlobal(QPoint(x, y));
  return canvas()->rect().contains(point) ? cellInterface(tolvane::cellAt(point)) : nullptr;
}

QAccessibleInterface* AccessibleCanvas::focusChild() const {
  return canvas()->hasFocus() ? cellInterface(canvas()->focusCell()) : nullptr;
}

void* AccessibleCanvas::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this)
                                             : QAccessibleWidget::interface_cast(type);
}

QAccessibleInterface* AccessibleCanvas::caption() const {
  return nullptr;
}

QAccessibleInterface* AccessibleCanvas::summary() const {
  return nullptr;
}

QAccessibleInterface* AccessibleCanvas::cellAt(int row, int column) const {
  return cellInterface({row, column});
}

QAccessibleInterface* AccessibleCanvas::cellInterface(const MatrixCell& cell) const {
  if (!canvas()->contains(cell)) {
    return nullptr;
  }
  // The index assumes the widest possible grid. So a cell keeps its object when columns are added or removed.
  constexpr std::int64_t widest = std::int64_t{1} << 31U;
  return cells_.at(cell.row * widest + cell.column, [&] { return new AccessibleCell(canvas(), cell); });
}

// Routes are checked, never selected.
int AccessibleCanvas::selectedCellCount() const {
  return 0;
}
QList<QAccessibleInterface*> AccessibleCanvas::selectedCells() const {
  return {};
}
int AccessibleCanvas::selectedColumnCount() const {
  return 0;
}
int AccessibleCanvas::selectedRowCount() const {
  return 0;
}
QList<int> AccessibleCanvas::selectedColumns() const {
  return {};
}
QList<int> AccessibleCanvas::selectedRows() const {
  return {};
}
bool AccessibleCanvas::isColumnSelected(int /*column*/) const {
  return false;
}
bool AccessibleCanvas::isRowSelected(int /*row*/) const {
  return false;
}
bool AccessibleCanvas::selectRow(int /*row*/) {
  return false;
}
bool AccessibleCanvas::selectColumn(int /*column*/) {
  return false;
}
bool AccessibleCanvas::unselectRow(int /*row*/) {
  return false;
}
bool AccessibleCanvas::unselectColumn(int /*column*/) {
  return false;
}

QString AccessibleCanvas::columnDescription(int column) const {
  return outputName(column, canvas()->outputNamer);
}
QString AccessibleCanvas::rowDescription(int row) const {
  return inputName(row, canvas()->inputNamer);
}
int AccessibleCanvas::columnCount() const {
  return asInt(canvas()->outputCount);
}
int AccessibleCanvas::rowCount() const {
  return asInt(canvas()->inputCount);
}

void AccessibleCanvas::modelChange(QAccessibleTableModelChangeEvent* /*event*/) {}

}  // namespace tolvane
