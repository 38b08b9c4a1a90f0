#include "app/panel_fixture.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QTest>

namespace tolvane::test {

PanelTest::PanelTest() {
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QDir().mkdir(folder.filePath("patches"));
}

PanelTest::~PanelTest() {
  while (QFileDialog* const left = panel()) delete left;
}

std::vector<QFileDialog*> PanelTest::panels() {
  std::vector<QFileDialog*> visible;
  for (QWidget* const widget : QApplication::topLevelWidgets()) {
    auto* const dialog = qobject_cast<QFileDialog*>(widget);
    if (dialog != nullptr && dialog->isVisible()) visible.push_back(dialog);
  }
  return visible;
}

QFileDialog* PanelTest::panel() {
  const auto visible = panels();
  return visible.empty() ? nullptr : visible.front();
}

void PanelTest::enter(const std::string& name) {
  QFileDialog* const open = panel();
  ASSERT_NE(open, nullptr);
  auto* const edit = open->findChild<QLineEdit*>("fileNameEdit");
  ASSERT_NE(edit, nullptr);
  edit->setText(QString::fromStdString(name));
  QTest::keyClick(edit, Qt::Key_Return);
}

void PanelTest::confirm(const std::string& name) {
  ASSERT_NO_FATAL_FAILURE(enter(name));
  EXPECT_TRUE(QTest::qWaitFor([] { return panel() == nullptr; }, 5000));
}

void PanelTest::answerYes() {
  QObject::connect(&answer_, &QTimer::timeout, [] {
    auto* const question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (question != nullptr) question->button(QMessageBox::Yes)->click();
  });
  answer_.start(5);
}

void PanelTest::cancel() {
  QFileDialog* const open = panel();
  ASSERT_NE(open, nullptr);
  QTest::keyClick(open, Qt::Key_Escape);
  EXPECT_TRUE(QTest::qWaitFor([] { return panel() == nullptr; }, 5000));
}

std::string PanelTest::path(const std::string& name) const {
  return folder.filePath("patches/" + QString::fromStdString(name)).toStdString();
}

bool PanelTest::exists(const std::string& name) const {
  return QFile::exists(QString::fromStdString(path(name)));
}

std::string PanelTest::contents(const std::string& name) const {
  QFile file(QString::fromStdString(path(name)));
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
  return file.readAll().toStdString();
}

void PanelTest::write(const std::string& name, const std::string& contents) const {
  QFile file(QString::fromStdString(path(name)));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name;
  file.write(QByteArray::fromStdString(contents));
}

}  // namespace tolvane::test
