#include "app/connections_table.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOption>
#include <cstddef>
#include <cstdint>

#include "app/connections_cell_delegate.h"
#include "app/entry_parsing.h"
#include "app/palette.h"
#include "base/fatal.h"
#include "matrix/calibrated_color.h"

namespace tolvane {
namespace {

constexpr int kRowHeight = 20;
constexpr int kHeaderHeight = 22;

/// One-based number of a zero-based channel. Does not overflow at the largest channel.
QString channelText(std::int64_t channel) {
  const QString number =
      channel < 0 ? QString::number(channel + 1) : QString::number(static_cast<std::uint64_t>(channel) + 1);
  return QStringLiteral("Ch ") + number;
}

QString cellText(const PatchConnection& route, QStringView identifier) {
  if (identifier == u"input") return channelText(route.inputChannel);
  if (identifier == u"output") return channelText(route.outputChannel);
  if (identifier == u"gain") return QString::fromStdString(formatGain(route.gain));
  if (identifier == u"active") return route.active ? QStringLiteral("✓") : QStringLiteral("○");
  return {};
}

const ConnectionsColumn& columnAt(int index) {
  return kConnectionsColumns.at(static_cast<std::size_t>(index));
}

QString identifierOf(int column) {
  return QString::fromLatin1(columnAt(column).identifier);
}

/// The part of the header above the scroll bar.
class HeaderEnd : public QWidget {
 public:
  HeaderEnd() { setFixedHeight(kHeaderHeight); }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawControl(QStyle::CE_HeaderEmptyArea, &option, &painter, this);
  }
};

}  // namespace

ConnectionsCell connectionsCell(const PatchConnection& route, QStringView identifier) {
  return {cellText(route, identifier), route.active ? calibratedWhite(1.0) : calibratedWhite(0.45)};
}

ConnectionsTableModel::ConnectionsTableModel(QObject* parent) : QAbstractTableModel(parent) {}

void ConnectionsTableModel::reload(const std::vector<PatchConnection>& routes) {
  beginResetModel();
  routes_ = routes;
  endResetModel();
}

int ConnectionsTableModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(routes_.size());
}

int ConnectionsTableModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(kConnectionsColumns.size());
}

QVariant ConnectionsTableModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (index.row() >= rowCount()) fatal("the connections table asked for a row that is not there");
  const PatchConnection& route = routes_[static_cast<std::size_t>(index.row())];
  const QString identifier = identifierOf(index.column());
  switch (role) {
    case Qt::DisplayRole:
      return connectionsCell(route, identifier).text;
    case Qt::AccessibleTextRole:
      if (identifier == u"active") return route.active ? QStringLiteral("on") : QStringLiteral("off");
      return connectionsCell(route, identifier).text;
    case Qt::ForegroundRole:
      return connectionsCell(route, identifier).color;
    case Qt::FontRole:
      return monospacedFont(11);
    default:
      return {};
  }
}

QVariant ConnectionsTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
  if (role == Qt::DisplayRole) return QString::fromLatin1(columnAt(section).title);
  if (role == kIdentifierRole) return identifierOf(section);
  return {};
}

ConnectionsTableView::ConnectionsTableView(QWidget* parent)
    : QTableView(parent), model_(new ConnectionsTableModel(this)), gridColor_(calibratedWhite(0.22)) {
  setModel(model_);
  setItemDelegate(new ConnectionsCellDelegate(this));
  setEditTriggers(NoEditTriggers);
  setSelectionBehavior(SelectRows);
  setSelectionMode(SingleSelection);
  setShowGrid(false);  // paintEvent draws lines between rows; columns have none
  setTabKeyNavigation(false);
  setWordWrap(false);
  setFrameShape(NoFrame);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setHorizontalScrollMode(ScrollPerPixel);
  addScrollBarWidget(new HeaderEnd, Qt::AlignTop);
  // Darker than elsewhere, to keep the grey text of inactive routes legible.
  QPalette colors = palette();
  colors.setColor(QPalette::Highlight, calibratedRgb(0.05, 0.24, 0.12));
  setPalette(colors);
  setUpHeaders();
}

void ConnectionsTableView::setUpHeaders() {
  verticalHeader()->hide();
  verticalHeader()->setMinimumSectionSize(kRowHeight);
  verticalHeader()->setDefaultSectionSize(kRowHeight);
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  QHeaderView* const header = horizontalHeader();
  header->setFont(systemFont(11));
  header->setFixedHeight(kHeaderHeight);
  header->setMinimumSectionSize(20);
  header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  header->setHighlightSections(false);
  for (int column = 0; column < model_->columnCount(); ++column)
    setColumnWidth(column, tolvane::columnAt(column).width);
}

int ConnectionsTableView::selectedRow() const {
  const QModelIndexList rows = selectionModel()->selectedRows();
  return rows.isEmpty() ? -1 : rows.first().row();
}

void ConnectionsTableView::reloadData(const std::vector<PatchConnection>& routes) {
  const int row = selectedRow();
  model_->reload(routes);
  if (row >= 0 && row < model_->rowCount()) {
    // Selecting a row that is out of sight must not scroll.
    setAutoScroll(false);
    selectionModel()->setCurrentIndex(model_->index(row, 0),
                                      QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    setAutoScroll(true);
  }
}

QModelIndex ConnectionsTableView::indexAt(const QPoint& position) const {
  const QModelIndex index = QTableView::indexAt(position);
  return index.isValid() ? index : model_->index(rowAt(position.y()), model_->columnCount() - 1);
}

void ConnectionsTableView::paintEvent(QPaintEvent* event) {
  const int width = viewport()->width();
  const int rows = model_->rowCount();
  const int last = rowAt(viewport()->height() - 1);
  const int firstVisible = rowAt(0);
  const int lastVisible = last < 0 ? rows - 1 : last;
  if (const int row = selectedRow(); row >= 0) {
    QPainter(viewport())
        .fillRect(0, rowViewportPosition(row), width, rowHeight(row), palette().color(QPalette::Highlight));
  }
  QTableView::paintEvent(event);
  QPainter painter(viewport());
  for (int row = firstVisible; row >= 0 && row <= lastVisible; ++row) {
    painter.fillRect(0, rowViewportPosition(row) + rowHeight(row) - 1, width, 1, gridColor_);
  }
}

void ConnectionsTableView::mousePressEvent(QMouseEvent* event) {
  if (!indexAt(event->position().toPoint()).isValid()) clearSelection();
  QTableView::mousePressEvent(event);
}

void ConnectionsTableView::keyPressEvent(QKeyEvent* event) {
  // Without a selection, keys start at the first row, not at the last selected one.
  if (selectedRow() < 0) selectionModel()->clearCurrentIndex();
  QTableView::keyPressEvent(event);
}

void ConnectionsTableView::selectionChanged(const QItemSelection& selected,
                                            const QItemSelection& deselected) {
  QTableView::selectionChanged(selected, deselected);
  viewport()->update();  // the base class repaints only the columns
}

}  // namespace tolvane
