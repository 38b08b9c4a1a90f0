#include "app/x_session.h"

#include <QDir>
#include <QElapsedTimer>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

namespace tolvane::test {
namespace {

void endProcess(QProcess& process) {
  if (process.state() == QProcess::NotRunning) return;
  process.terminate();
  if (!process.waitForFinished(5000)) {
    process.kill();
    process.waitForFinished(5000);
  }
}

xcb_atom_t atom(xcb_connection_t* connection, const char* name) {
  const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
  const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
      xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

/// True if a thread of the process runs, waits for a processor or waits for a disk.
bool isAtWork(qint64 processId) {
  std::error_code gone;  // threads may end during the loop
  const std::filesystem::path tasks = "/proc/" + std::to_string(processId) + "/task";
  for (std::filesystem::directory_iterator task(tasks, gone), end; !gone && task != end;
       task.increment(gone)) {
    std::ifstream file(task->path() / "stat");
    std::string text;
    std::getline(file, text);
    // The state follows the name. The name is in parentheses and may contain parentheses.
    const std::size_t name = text.rfind(')');
    if (name == std::string::npos || name + 2 >= text.size()) continue;
    if (text[name + 2] == 'R' || text[name + 2] == 'D') return true;
  }
  return false;
}

}  // namespace

bool waitFor(const std::function<bool()>& condition, int timeoutMs) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

XSession::XSession() {
  server_.start("Xvfb", {"-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"});
  // The server writes its display number when it is ready.
  if (server_.waitForReadyRead(30000)) display_ = ":" + server_.readLine().trimmed().toStdString();
}

XSession::~XSession() {
  endProcess(program_);
  endProcess(server_);
}

bool XSession::start(const std::string& program, const std::vector<std::string>& arguments) {
  QStringList list;
  for (const std::string& argument : arguments) list << QString::fromStdString(argument);
  QDir().mkdir(folder_.filePath("run"));
  auto environment = QProcessEnvironment::systemEnvironment();
  environment.insert("DISPLAY", QString::fromStdString(display_));
  environment.insert("QT_QPA_PLATFORM", "xcb");
  environment.insert("QT_SCALE_FACTOR", "1");
  environment.insert("HOME", folder_.path());
  environment.insert("XDG_CONFIG_HOME", folder_.filePath("config"));
  // Keeps the machine's sound servers out of the test.
  environment.insert("XDG_RUNTIME_DIR", runtimeFolder_);
  environment.insert("PIPEWIRE_RUNTIME_DIR", runtimeFolder_);
  environment.insert("JACK_DEFAULT_SERVER", "tolvane-test-none");
  environment.remove("PIPEWIRE_REMOTE");
  environment.remove("WAYLAND_DISPLAY");
  environment.remove("DBUS_SESSION_BUS_ADDRESS");
  environment.insert(variables_);
  program_.setProcessEnvironment(environment);
  program_.setStandardErrorFile(folder_.filePath("stderr"));
  program_.start(QString::fromStdString(program), list);
  return program_.waitForStarted(30000);
}

std::string XSession::xdotool(const QStringList& arguments) {
  QProcess process;
  auto environment = QProcessEnvironment::systemEnvironment();
  environment.insert("DISPLAY", QString::fromStdString(display_));
  process.setProcessEnvironment(environment);
  process.start("xdotool", arguments);
  EXPECT_TRUE(process.waitForFinished(60000)) << arguments.join(' ').toStdString();
  return process.readAllStandardOutput().trimmed().toStdString();
}

std::string XSession::windowTitled(const std::string& title) {
  std::string window;
  waitFor([&] {
    window = xdotool({"search", "--onlyvisible", "--name", QString::fromStdString("^" + title + "$")});
    return !window.empty();
  });
  return window.substr(0, window.find('\n'));
}

bool XSession::waitUntilGone(const std::string& title) {
  return waitFor([&] {
    return xdotool({"search", "--onlyvisible", "--name", QString::fromStdString("^" + title + "$")}).empty();
  });
}

void XSession::click(const std::string& window, int x, int y) {
  xdotool({"mousemove", "--window", QString::fromStdString(window), QString::number(x), QString::number(y)});
  xdotool({"click", "1"});
}

void XSession::type(const std::string& text) {
  xdotool({"type", "--delay", "5", QString::fromStdString(text)});
}

void XSession::key(const std::string& name) {
  xdotool({"key", QString::fromStdString(name)});
}

std::pair<int, int> XSession::sizeOf(const std::string& window) {
  std::pair<int, int> size;
  const QString shell =
      QString::fromStdString(xdotool({"getwindowgeometry", "--shell", QString::fromStdString(window)}));
  for (const QString& line : shell.split('\n')) {
    if (line.startsWith("WIDTH=")) size.first = line.mid(6).toInt();
    if (line.startsWith("HEIGHT=")) size.second = line.mid(7).toInt();
  }
  return size;
}

std::uint32_t XSession::propertyWords(const std::string& window, const char* property) {
  xcb_connection_t* const connection = xcb_connect(display_.c_str(), nullptr);
  const auto cookie =
      xcb_get_property(connection, 0, static_cast<xcb_window_t>(std::stoul(window)),
                       atom(connection, property), XCB_GET_PROPERTY_TYPE_ANY, 0, UINT32_MAX / 4);
  const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
      xcb_get_property_reply(connection, cookie, nullptr), &std::free);
  const std::uint32_t words = reply && reply->format == 32 ? reply->value_len : 0;
  xcb_disconnect(connection);
  return words;
}

std::optional<int> XSession::idleMsUntilTheEnd() {
  constexpr qint64 kLook = 5;
  qint64 idleMs = 0;
  QElapsedTimer total;
  QElapsedTimer sinceLook;
  total.start();
  sinceLook.start();
  while (!program_.waitForFinished(kLook)) {
    if (total.elapsed() > 60000) return std::nullopt;
    const bool atWork = isAtWork(program_.processId()) || isAtWork(server_.processId());
    // A late sample tells nothing about the time before it.
    if (!atWork) idleMs += std::min(sinceLook.elapsed(), 2 * kLook);
    sinceLook.restart();
  }
  return static_cast<int>(idleMs);
}

void XSession::requestClose(const std::string& window) {
  xcb_connection_t* const connection = xcb_connect(display_.c_str(), nullptr);
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = static_cast<xcb_window_t>(std::stoul(window));
  message.type = atom(connection, "WM_PROTOCOLS");
  message.data.data32[0] = atom(connection, "WM_DELETE_WINDOW");
  message.data.data32[1] = XCB_CURRENT_TIME;
  xcb_send_event(connection, 0, message.window, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&message));
  // The reply proves that the server has read the message. The server may drop a client's last message if the
  // client disconnects right after it.
  std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
  xcb_disconnect(connection);
}

}  // namespace tolvane::test
