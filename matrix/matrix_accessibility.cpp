#include "matrix/matrix_accessibility.h"

#include <QAccessible>

#include "matrix/accessible_canvas.h"
#include "matrix/accessible_strip.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_col_header.h"
#include "matrix/patch_matrix_row_header.h"
#include "matrix/patch_matrix_view.h"

namespace tolvane {
namespace {

QAccessibleInterface* columnStrip(PatchMatrixColHeader* strip) {
  StripContents contents;
  contents.count = [strip] { return strip->outputCount; };
  contents.name = [strip](std::int64_t column) { return outputName(column, strip->namer); };
  contents.place = [strip](std::int64_t column) {
    return columnLabelRect(column, strip->scrollOffset, strip->height());
  };
  contents.labelRole = QAccessible::ColumnHeader;
  return new AccessibleStrip(strip, QStringLiteral("Outputs"), std::move(contents));
}

QAccessibleInterface* rowStrip(PatchMatrixRowHeader* strip) {
  StripContents contents;
  contents.count = [strip] { return strip->inputCount; };
  contents.name = [strip](std::int64_t row) { return inputName(row, strip->namer); };
  contents.place = [strip](std::int64_t row) {
    return rowLabelRect(row, strip->scrollOffset, strip->width());
  };
  contents.labelRole = QAccessible::RowHeader;
  return new AccessibleStrip(strip, QStringLiteral("Inputs"), std::move(contents));
}

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
  if (auto* canvas = qobject_cast<PatchMatrixCanvas*>(object)) {
    return new AccessibleCanvas(canvas);
  }
  if (auto* strip = qobject_cast<PatchMatrixColHeader*>(object)) {
    return columnStrip(strip);
  }
  if (auto* strip = qobject_cast<PatchMatrixRowHeader*>(object)) {
    return rowStrip(strip);
  }
  return nullptr;
}

template <class Interface>
Interface* interfaceOf(QWidget* widget) {
  return static_cast<Interface*>(QAccessible::queryAccessibleInterface(widget));
}

}  // namespace

void installMatrixAccessibility() {
  QAccessible::installFactory(makeInterface);
}

void announceChanges(const PatchMatrixView& matrix, const MatrixContents& before) {
  auto* table = interfaceOf<AccessibleCanvas>(matrix.canvas);
  if (before.inputCount != matrix.inputCount || before.outputCount != matrix.outputCount) {
    table->dropInvalid();
    interfaceOf<AccessibleStrip>(matrix.colHeader)->dropInvalid();
    interfaceOf<AccessibleStrip>(matrix.rowHeader)->dropInvalid();
    QAccessibleTableModelChangeEvent event(matrix.canvas, QAccessibleTableModelChangeEvent::ModelReset);
    QAccessible::updateAccessibility(&event);
  }
  QAccessible::State checked;
  checked.checked = true;
  for (QAccessibleInterface* cell : table->changedCells(before.connections)) {
    QAccessibleStateChangeEvent event(cell, checked);
    QAccessible::updateAccessibility(&event);
  }
}

void announceNames(const PatchMatrixView& matrix) {
  if (!QAccessible::isActive()) {
    return;
  }
  const auto announce = [](QAccessibleInterface& named) {
    QAccessibleEvent event(&named, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
  };
  interfaceOf<AccessibleCanvas>(matrix.canvas)->forEachCell(announce);
  interfaceOf<AccessibleStrip>(matrix.colHeader)->forEachLabel(announce);
  interfaceOf<AccessibleStrip>(matrix.rowHeader)->forEachLabel(announce);
}

void announceFocus(const PatchMatrixView& matrix) {
  if (QAccessibleInterface* cell = interfaceOf<AccessibleCanvas>(matrix.canvas)->focusChild()) {
    QAccessibleEvent event(cell, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
  }
}

}  // namespace tolvane
