// A private X server and a program in it, driven by real pointer and key events.
#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::test {

/// Checks the condition every few milliseconds. Returns true if it became true before the deadline.
bool waitFor(const std::function<bool()>& condition, int timeoutMs = 30000);

/// The destructor ends all processes that the session started. [main-thread]
class XSession {
 public:
  XSession();
  ~XSession();
  XSession(const XSession&) = delete;
  XSession& operator=(const XSession&) = delete;

  [[nodiscard]] bool isUp() const { return !display_.empty(); }

  /// Sets the folder where programs started from now on look for sound servers. By default that folder has
  /// none.
  void lookForServersIn(const std::string& folder) { runtimeFolder_ = QString::fromStdString(folder); }

  /// Sets another environment variable for the programs started from now on.
  void setVariable(const QString& name, const QString& value) { variables_.insert(name, value); }

  /// Starts the program in this session.
  bool start(const std::string& program, const std::vector<std::string>& arguments);
  [[nodiscard]] QProcess& program() { return program_; }

  /// Waits for a visible window with this title. Returns an empty string if none appears.
  std::string windowTitled(const std::string& title);
  /// Waits until no visible window has this title. Returns false if one stays.
  bool waitUntilGone(const std::string& title);

  /// Moves the pointer to this point of the window and clicks, through the server.
  void click(const std::string& window, int x, int y);
  void type(const std::string& text);
  void key(const std::string& name);
  /// Width and height of the window.
  std::pair<int, int> sizeOf(const std::string& window);
  /// Number of 32-bit words in a property of the window; 0 if it has no such property.
  std::uint32_t propertyWords(const std::string& window, const char* property);
  /// Asks the window to close, as a window manager does for its close button.
  void requestClose(const std::string& window);

  /// Waits for the program's end. Returns how long the program and the X server were idle before. Time in
  /// which a thread of either ran or waited for a processor does not count. Returns nullopt if the program
  /// does not end within a minute.
  std::optional<int> idleMsUntilTheEnd();

  [[nodiscard]] const QTemporaryDir& folder() const { return folder_; }

 private:
  /// Runs xdotool and returns its standard output.
  std::string xdotool(const QStringList& arguments);

  QTemporaryDir folder_;
  QProcessEnvironment variables_;
  QString runtimeFolder_ = folder_.filePath("run");
  std::string display_;
  QProcess server_;
  QProcess program_;
};

}  // namespace tolvane::test
