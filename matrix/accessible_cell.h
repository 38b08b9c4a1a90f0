#pragma once

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QPointer>

#include "matrix/patch_matrix_canvas.h"

namespace tolvane {

/// One cell of the grid for assistive technology: "In 3 → Out 7", with the channels' names if they have any,
/// checked when the route exists. Its action toggles the route. Valid while the canvas lives and has such a
/// cell. All of it [main-thread].
class AccessibleCell : public QAccessibleInterface,
                       public QAccessibleTableCellInterface,
                       public QAccessibleActionInterface {
 public:
  AccessibleCell(PatchMatrixCanvas* canvas, const MatrixCell& cell);

  [[nodiscard]] const MatrixCell& cell() const noexcept { return cell_; }

  bool isValid() const override;
  QObject* object() const override;
  QWindow* window() const override;
  QAccessibleInterface* parent() const override;
  QAccessibleInterface* child(int index) const override;
  QAccessibleInterface* childAt(int x, int y) const override;
  int childCount() const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QRect rect() const override;
  QString text(QAccessible::Text kind) const override;
  void setText(QAccessible::Text kind, const QString& text) override;
  QAccessible::Role role() const override;
  QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  bool isSelected() const override;
  QList<QAccessibleInterface*> columnHeaderCells() const override;
  QList<QAccessibleInterface*> rowHeaderCells() const override;
  int columnIndex() const override;
  int rowIndex() const override;
  int columnExtent() const override;
  int rowExtent() const override;
  QAccessibleInterface* table() const override;

  QStringList actionNames() const override;
  void doAction(const QString& name) override;
  QStringList keyBindingsForAction(const QString& name) const override;

 private:
  [[nodiscard]] QList<QAccessibleInterface*> headerCell(QWidget* strip, std::int64_t index) const;

  QPointer<PatchMatrixCanvas> canvas_;
  MatrixCell cell_;
};

}  // namespace tolvane
