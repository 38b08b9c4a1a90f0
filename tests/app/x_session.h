// A private X server, and a program in it that is worked by real pointer and key events.
#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::test {

/// Whether the condition came true before the deadline; looks every few milliseconds.
bool waitFor(const std::function<bool()>& condition, int timeoutMs = 30000);

/// [main-thread]. Ends what it started when it goes.
class XSession {
 public:
  XSession();
  ~XSession();
  XSession(const XSession&) = delete;
  XSession& operator=(const XSession&) = delete;

  [[nodiscard]] bool isUp() const { return !display_.empty(); }

  /// The folder in which programs started from now on look for sound servers; at first one without any.
  void lookForServersIn(const std::string& folder) { runtimeFolder_ = QString::fromStdString(folder); }

  /// Gives the programs started from now on this variable as well.
  void setVariable(const QString& name, const QString& value) { variables_.insert(name, value); }

  /// Starts the program in this session.
  bool start(const std::string& program, const std::vector<std::string>& arguments);
  [[nodiscard]] QProcess& program() { return program_; }

  /// The window with this title, once it is visible; empty when it does not come.
  std::string windowTitled(const std::string& title);
  /// True when no visible window has this title any more.
  bool waitUntilGone(const std::string& title);

  /// Moves the pointer there in the window and clicks, through the server.
  void click(const std::string& window, int x, int y);
  void type(const std::string& text);
  void key(const std::string& name);
  /// Width and height of the window.
  std::pair<int, int> sizeOf(const std::string& window);
  /// How many 32-bit words a property of the window has; 0 when it has no such property.
  std::uint32_t propertyWords(const std::string& window, const char* property);
  /// Asks the window to close, as a window manager does when its button is pressed.
  void requestClose(const std::string& window);

  /// Waits for the program's end. For how long it did nothing before, which is not how long a thread of it or
  /// of the X server ran or waited for a processor; none when it does not end in a minute.
  std::optional<int> idleMsUntilTheEnd();

  [[nodiscard]] const QTemporaryDir& folder() const { return folder_; }

 private:
  /// Runs xdotool; its standard output.
  std::string xdotool(const QStringList& arguments);

  QTemporaryDir folder_;
  QProcessEnvironment variables_;
  QString runtimeFolder_ = folder_.filePath("run");
  std::string display_;
  QProcess server_;
  QProcess program_;
};

}  // namespace tolvane::test
