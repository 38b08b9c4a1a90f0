#pragma once

#include <QAccessibleWidget>
#include <vector>

#include "matrix/accessible_children.h"
#include "matrix/patch_matrix_canvas.h"

namespace tolvane {

/// The grid as a table for assistive technology. Its children are the cells, row by row. A cell's object is
/// made on the first request. All of it [main-thread].
class AccessibleCanvas : public QAccessibleWidget, public QAccessibleTableInterface {
 public:
  explicit AccessibleCanvas(PatchMatrixCanvas* canvas);

  /// Existing cell objects whose routes were added or removed since `before`, the routes shown earlier.
  [[nodiscard]] std::vector<QAccessibleInterface*> changedCells(const RouteKeys& before) const;
  /// Calls visit for every cell object that exists.
  void forEachCell(const std::function<void(QAccessibleInterface&)>& visit) const { cells_.forEach(visit); }
  /// Deletes the objects of cells that the grid no longer has.
  void dropInvalid() { cells_.dropInvalid(); }

  int childCount() const override;
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override;
  QAccessibleInterface* focusChild() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  QAccessibleInterface* caption() const override;
  QAccessibleInterface* summary() const override;
  QAccessibleInterface* cellAt(int row, int column) const override;
  int selectedCellCount() const override;
  QList<QAccessibleInterface*> selectedCells() const override;
  QString columnDescription(int column) const override;
  QString rowDescription(int row) const override;
  int selectedColumnCount() const override;
  int selectedRowCount() const override;
  int columnCount() const override;
  int rowCount() const override;
  QList<int> selectedColumns() const override;
  QList<int> selectedRows() const override;
  bool isColumnSelected(int column) const override;
  bool isRowSelected(int row) const override;
  bool selectRow(int row) override;
  bool selectColumn(int column) override;
  bool unselectRow(int row) override;
  bool unselectColumn(int column) override;
  void modelChange(QAccessibleTableModelChangeEvent* event) override;

 private:
  [[nodiscard]] PatchMatrixCanvas* canvas() const;
  [[nodiscard]] QAccessibleInterface* cellInterface(const MatrixCell& cell) const;

  mutable AccessibleChildren cells_;
};

}  // namespace tolvane
