// The window with its file panels, in a folder of its own.
#pragma once

#include <QFileDialog>
#include <QTemporaryDir>
#include <QTimer>
#include <string>

#include "app/window_fixture.h"

namespace tolvane::test {

class PanelTest : public WindowTest {
 protected:
  PanelTest();
  ~PanelTest() override;

  /// The one panel that is open, or null.
  [[nodiscard]] static QFileDialog* panel();
  /// Types the name into the open panel and confirms it by the Return key, then waits until it has closed.
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
