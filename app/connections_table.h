// The connections table: the route list as rows, read only.
#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <QTableView>
#include <array>
#include <vector>

#include "core/patch_connection.h"

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

/// What a route shows in the column with this identifier; the text is empty for any other identifier.
[[nodiscard]] ConnectionsCell connectionsCell(const PatchConnection& route, QStringView identifier);

/// [main-thread]
class ConnectionsTableModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  /// Role of a column's identifier in the horizontal header data.
  static constexpr int kIdentifierRole = Qt::UserRole;

  explicit ConnectionsTableModel(QObject* parent = nullptr);

  /// Shows another route list. The views' selection goes with the old one.
  void reload(const std::vector<PatchConnection>& routes);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::vector<PatchConnection> routes_;
};

/// A row reaches to the right edge of the view, beyond its last column: its band, its line, and clicks on it.
/// [main-thread]
class ConnectionsTableView : public QTableView {
  Q_OBJECT

 public:
  explicit ConnectionsTableView(QWidget* parent = nullptr);

  /// The selected row, or -1.
  [[nodiscard]] int selectedRow() const;

  /// Shows another route list. The selected row stays selected as long as there is such a row, and the list
  /// stays scrolled as it is as long as it is long enough.
  void reloadData(const std::vector<PatchConnection>& routes);

  /// The cell there; right of the columns, the last cell of the row.
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
