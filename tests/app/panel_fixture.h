// The window with its file panels, in its own folder.
#pragma once

#include <QFileDialog>
#include <QTemporaryDir>
#include <QTimer>
#include <string>
#include <vector>

#include "app/window_fixture.h"

namespace tolvane::test {

class PanelTest : public WindowTest {
 protected:
  PanelTest();
  ~PanelTest() override;

  /// The open panel, or null.
  [[nodiscard]] static QFileDialog* panel();
  /// All open panels.
  [[nodiscard]] static std::vector<QFileDialog*> panels();
  /// Types the name into the open panel and presses the Return key.
  static void enter(const std::string& name);
  /// Does the same and waits until the panel has closed.
  void confirm(const std::string& name);
  /// Answers yes as soon as the panel asks whether to replace a file.
  void answerYes();
  /// Closes the open panel with the Escape key.
  void cancel();

  [[nodiscard]] std::string path(const std::string& name) const;
  [[nodiscard]] bool exists(const std::string& name) const;
  [[nodiscard]] std::string contents(const std::string& name) const;
  void write(const std::string& name, const std::string& contents) const;

  QTemporaryDir folder;

 private:
  QTimer answer_;
};

}  // namespace tolvane::test
