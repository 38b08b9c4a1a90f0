// The connections table: the route list as rows, read only.
#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <QTableView>
#include <array>
#include <vector>

#include "core/patch/patch_connection.h"

namespace tolvane {

struct ConnectionsColumn {
  const char* identifier;
  const char* title;
  int width;  // points
};

inline constexpr std::array<ConnectionsColumn, 4> kConnectionsColumns{{
    {"input", "In Ch", 52},
    {"output", "Out Ch", 52},
    {"gain", "Gain", 46},
    {"active", "On", 34},
}};

struct ConnectionsCell {
  QString text;
  QColor color;
};

/// Text and colour of a route in the column with this identifier. The text is empty for an unknown
/// identifier.
[[nodiscard]] ConnectionsCell connectionsCell(const PatchConnection& route, QStringView identifier);

/// [main-thread]
class ConnectionsTableModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  /// Role of a column's identifier in the horizontal header data.
  static constexpr int kIdentifierRole = Qt::UserRole;

  explicit ConnectionsTableModel(QObject* parent = nullptr);

  /// Replaces the route list. The views lose their selection.
  void reload(const std::vector<PatchConnection>& routes);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::vector<PatchConnection> routes_;
};

/// The table's view. A row's selection band, its line and its click area extend beyond the last column to the
/// right edge of the view. [main-thread]
class ConnectionsTableView : public QTableView {
  Q_OBJECT

 public:
  explicit ConnectionsTableView(QWidget* parent = nullptr);

  /// The selected row, or -1.
  [[nodiscard]] int selectedRow() const;

  /// Replaces the route list. The selected row stays selected if the new list has a row of that number. The
  /// scroll position stays if the new list is long enough.
  void reloadData(const std::vector<PatchConnection>& routes);

  /// The cell at this position. Right of the columns, the last cell of the row.
  [[nodiscard]] QModelIndex indexAt(const QPoint& position) const override;

  /// The colour of the lines between the rows.
  [[nodiscard]] const QColor& gridColor() const { return gridColor_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  void setUpHeaders();

  ConnectionsTableModel* model_;  // a child of this view
  QColor gridColor_;
};

}  // namespace tolvane
