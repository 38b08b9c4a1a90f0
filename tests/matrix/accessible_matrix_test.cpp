#include <QAccessible>
#include <QTest>

#include <gmock/gmock.h>

#include "matrix/accessible_canvas.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_col_header.h"
#include "matrix/patch_matrix_row_header.h"
#include "matrix/patch_matrix_view.h"
#include "support/qt_events.h"

namespace tolvane {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

// Returns the part, or ends the test if it is null.
template <class Part>
Part& existing(Part* part) {
  if (part == nullptr) {
    throw std::runtime_error("a part of the accessible matrix is missing");
  }
  return *part;
}

class AccessibleMatrix : public ::testing::Test {
 protected:
  AccessibleMatrix() : view_(QRect(0, 0, 576, 298)) {
    view_.onConnectionToggled = [this](std::int64_t input, std::int64_t output) {
      toggled_.emplace_back(input, output);
    };
    view_.configure(18, 20, {{2, 6, 1.0F, true}});
    view_.show();
  }

  [[nodiscard]] QAccessibleInterface& canvas() const {
    return existing(QAccessible::queryAccessibleInterface(view_.canvas));
  }
  [[nodiscard]] QAccessibleTableInterface& table() const { return existing(canvas().tableInterface()); }

  PatchMatrixView view_;
  std::vector<std::pair<std::int64_t, std::int64_t>> toggled_;
};

TEST_F(AccessibleMatrix, IsATableOfItsChannels) {
  ASSERT_NE(canvas().tableInterface(), nullptr);
  EXPECT_EQ(canvas().role(), QAccessible::Table);
  EXPECT_EQ(canvas().text(QAccessible::Name), QStringLiteral("Patch matrix"));
  EXPECT_EQ(table().rowCount(), 18);
  EXPECT_EQ(table().columnCount(), 20);
  EXPECT_EQ(table().rowDescription(2), QStringLiteral("In 3"));
  EXPECT_EQ(table().columnDescription(6), QStringLiteral("Out 7"));
  EXPECT_EQ(canvas().childCount(), 18 * 20);
  EXPECT_EQ(table().selectedCellCount(), 0);
}

TEST_F(AccessibleMatrix, CellsSayTheirChannelsAndTheirState) {
  const QAccessibleInterface* route = table().cellAt(2, 6);
  ASSERT_NE(route, nullptr);
  EXPECT_TRUE(route->isValid());
  EXPECT_EQ(route->role(), QAccessible::Cell);
  EXPECT_EQ(route->text(QAccessible::Name), QStringLiteral("In 3 → Out 7"));
  EXPECT_TRUE(route->state().checkable);
  EXPECT_TRUE(route->state().checked);
  const QAccessibleInterface* none = table().cellAt(6, 2);
  EXPECT_EQ(none->text(QAccessible::Name), QStringLiteral("In 7 → Out 3"));
  EXPECT_TRUE(none->state().checkable);
  EXPECT_FALSE(none->state().checked);
}

TEST_F(AccessibleMatrix, ThereIsNoCellOutsideTheGrid) {
  EXPECT_EQ(table().cellAt(18, 0), nullptr);
  EXPECT_EQ(table().cellAt(0, 20), nullptr);
  EXPECT_EQ(table().cellAt(-1, 0), nullptr);
  EXPECT_EQ(canvas().child(18 * 20), nullptr);
  EXPECT_EQ(canvas().child(-1), nullptr);
}

TEST_F(AccessibleMatrix, CellsKnowTheirPlace) {
  QAccessibleInterface* cell = table().cellAt(2, 6);
  QAccessibleTableCellInterface* place = &existing(cell->tableCellInterface());
  EXPECT_EQ(place->rowIndex(), 2);
  EXPECT_EQ(place->columnIndex(), 6);
  EXPECT_EQ(place->rowExtent(), 1);
  EXPECT_EQ(place->columnExtent(), 1);
  EXPECT_EQ(place->table(), &canvas());
  EXPECT_EQ(cell->parent(), &canvas());
  EXPECT_EQ(canvas().indexOfChild(cell), 2 * 20 + 6);
  EXPECT_EQ(canvas().child(2 * 20 + 6), cell);
  EXPECT_EQ(cell->rect(), QRect(view_.canvas->mapToGlobal(QPoint(96, 32)), QSize(16, 16)));
  EXPECT_EQ(canvas().childAt(cell->rect().center().x(), cell->rect().center().y()), cell);
}

TEST_F(AccessibleMatrix, CellsHaveTheirHeaders) {
  QAccessibleTableCellInterface* cell = &existing(existing(table().cellAt(2, 6)).tableCellInterface());
  ASSERT_EQ(cell->rowHeaderCells().size(), 1);
  ASSERT_EQ(cell->columnHeaderCells().size(), 1);
  const QAccessibleInterface* row = cell->rowHeaderCells().first();
  const QAccessibleInterface* column = cell->columnHeaderCells().first();
  EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("In 3"));
  EXPECT_EQ(row->role(), QAccessible::RowHeader);
  EXPECT_EQ(column->text(QAccessible::Name), QStringLiteral("Out 7"));
  EXPECT_EQ(column->role(), QAccessible::ColumnHeader);
  EXPECT_EQ(row->rect(), QRect(view_.rowHeader->mapToGlobal(QPoint(0, 32)), QSize(38, 16)));
  EXPECT_EQ(column->rect(), QRect(view_.colHeader->mapToGlobal(QPoint(96, 0)), QSize(16, 38)));
}

TEST_F(AccessibleMatrix, StripsListTheirLabels) {
  QAccessibleInterface* outputs = QAccessible::queryAccessibleInterface(view_.colHeader);
  EXPECT_EQ(outputs->text(QAccessible::Name), QStringLiteral("Outputs"));
  EXPECT_EQ(outputs->childCount(), 20);
  EXPECT_EQ(outputs->child(19)->text(QAccessible::Name), QStringLiteral("Out 20"));
  EXPECT_EQ(outputs->indexOfChild(outputs->child(19)), 19);
  EXPECT_EQ(outputs->child(20), nullptr);
  const QPoint label = outputs->child(3)->rect().center();
  EXPECT_EQ(outputs->childAt(label.x(), label.y()), outputs->child(3));
  QAccessibleInterface* inputs = QAccessible::queryAccessibleInterface(view_.rowHeader);
  EXPECT_EQ(inputs->text(QAccessible::Name), QStringLiteral("Inputs"));
  EXPECT_EQ(inputs->childCount(), 18);
}

TEST_F(AccessibleMatrix, TheActionOfACellTogglesIt) {
  QAccessibleActionInterface* action = &existing(existing(table().cellAt(3, 5)).actionInterface());
  EXPECT_TRUE(action->actionNames().contains(QAccessibleActionInterface::toggleAction()));
  EXPECT_TRUE(action->actionNames().contains(QAccessibleActionInterface::pressAction()));
  action->doAction(QAccessibleActionInterface::toggleAction());
  action->doAction(QAccessibleActionInterface::pressAction());
  action->doAction(QStringLiteral("no such action"));
  EXPECT_THAT(toggled_, ElementsAre(Pair(3, 5), Pair(3, 5)));
}

TEST_F(AccessibleMatrix, ARouteThatComesOrGoesChangesTheCellsInUse) {
  QAccessibleInterface* comes = table().cellAt(3, 5);
  QAccessibleInterface* goes = table().cellAt(2, 6);
  table().cellAt(0, 0);
  const RouteKeys before = view_.connections;
  view_.configure(18, 20, {{3, 5, 1.0F, true}});
  EXPECT_TRUE(comes->state().checked);
  EXPECT_FALSE(goes->state().checked);
  EXPECT_THAT(static_cast<AccessibleCanvas&>(canvas()).changedCells(before),
              ::testing::UnorderedElementsAre(comes, goes));
}

TEST_F(AccessibleMatrix, AnotherSizeForgetsTheCellsThatAreGone) {
  const QAccessibleInterface* stays = table().cellAt(1, 1);
  const QAccessible::Id stayed = QAccessible::uniqueId(table().cellAt(1, 1));
  const QAccessible::Id gone = QAccessible::uniqueId(table().cellAt(17, 19));
  view_.configure(4, 30, {});
  EXPECT_EQ(QAccessible::accessibleInterface(gone), nullptr);
  EXPECT_EQ(QAccessible::accessibleInterface(stayed), stays);
  EXPECT_EQ(table().rowCount(), 4);
  EXPECT_EQ(table().columnCount(), 30);
  EXPECT_EQ(table().cellAt(1, 1), stays);
  EXPECT_EQ(canvas().indexOfChild(stays), 31);
}

TEST_F(AccessibleMatrix, TheFocusCellIsTheFocusedChild) {
  ASSERT_TRUE(showActive(view_));
  view_.canvas->setFocus(Qt::TabFocusReason);
  QTest::keyClick(view_.canvas, Qt::Key_Right);
  EXPECT_EQ(canvas().focusChild(), table().cellAt(0, 1));
  EXPECT_TRUE(table().cellAt(0, 1)->state().focused);
  EXPECT_FALSE(table().cellAt(0, 0)->state().focused);
}

TEST_F(AccessibleMatrix, ACellCanBeFocusedByItsAction) {
  ASSERT_TRUE(showActive(view_));
  existing(existing(table().cellAt(4, 4)).actionInterface())
      .doAction(QAccessibleActionInterface::setFocusAction());
  EXPECT_TRUE(view_.canvas->hasFocus());
  EXPECT_EQ(view_.canvas->focusCell(), (MatrixCell{4, 4}));
}

TEST_F(AccessibleMatrix, ACanvasWithoutOutputsHasNoCells) {
  view_.canvas->outputCount = 0;
  EXPECT_EQ(canvas().childCount(), 0);
  EXPECT_EQ(canvas().child(0), nullptr);
  EXPECT_EQ(canvas().child(7), nullptr);
  EXPECT_EQ(table().cellAt(0, 0), nullptr);
  EXPECT_EQ(canvas().focusChild(), nullptr);
}

TEST_F(AccessibleMatrix, AMillionCellsAreAskedForOneByOne) {
  view_.configure(1024, 1024, {{1023, 1023, 1.0F, true}});
  EXPECT_EQ(canvas().childCount(), 1024 * 1024);
  QAccessibleInterface* last = table().cellAt(1023, 1023);
  ASSERT_NE(last, nullptr);
  EXPECT_EQ(last->text(QAccessible::Name), QStringLiteral("In 1024 → Out 1024"));
  EXPECT_TRUE(last->state().checked);
  EXPECT_TRUE(last->state().offscreen);
  EXPECT_EQ(canvas().indexOfChild(last), 1024 * 1024 - 1);
  EXPECT_EQ(table().cellAt(1023, 1023), last) << "the same object every time";
  EXPECT_FALSE(table().cellAt(0, 0)->state().offscreen);
}

TEST(AccessibleLifetime, CellsGoWithTheCanvas) {
  QAccessible::Id id = 0;
  {
    PatchMatrixView view(QRect(0, 0, 576, 298));
    QAccessibleInterface* canvas = QAccessible::queryAccessibleInterface(view.canvas);
    id = QAccessible::uniqueId(existing(canvas->tableInterface()).cellAt(0, 0));
    EXPECT_NE(QAccessible::accessibleInterface(id), nullptr);
  }
  EXPECT_EQ(QAccessible::accessibleInterface(id), nullptr);
}

}  // namespace
}  // namespace tolvane
