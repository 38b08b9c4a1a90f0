// The window with its file panels, in a folder of its own.
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

  /// The one panel that is open, or null.
  [[nodiscard]] static QFileDialog* panel();
  /// All that are open.
  [[nodiscard]] static std::vector<QFileDialog*> panels();
  /// Types the name into the open panel and presses the Return key.
  static void enter(const std::string& name);
  /// The same, and waits until the panel has closed.
  void confirm(const std::string& name);
  /// Says yes to the question whether a file is to be replaced, as soon as it is asked.
  void answerYes();
  /// Closes the open panel by the Escape key.
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
