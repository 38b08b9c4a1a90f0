#include "app/accessibility_bus.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDir>
#include <utility>

#include <gtest/gtest.h>

#include "app/x_session.h"

namespace tolvane::test {
namespace {

const Accessible kRegistry{"org.a11y.atspi.Registry", "/org/a11y/atspi/registry"};
const Accessible kDesktop{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
constexpr int kCheckedState = 4;

void end(QProcess& process) {
  process.terminate();
  if (!process.waitForFinished(5000)) process.kill();
  process.waitForFinished(5000);
}

QDBusMessage toSet(const char* interface, const char* name, bool value) {
  QDBusMessage message = QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus",
                                                        "org.freedesktop.DBus.Properties", "Set");
  message << interface << name << QVariant::fromValue(QDBusVariant(value));
  return message;
}

Accessible readAccessible(const QDBusArgument& argument) {
  Accessible object;
  QDBusObjectPath path;
  argument.beginStructure();
  argument >> object.service >> path;
  argument.endStructure();
  object.path = path.path();
  return object;
}

}  // namespace

AccessibilityBus::AccessibilityBus(const QString& folder) {
  QDir().mkpath(folder);
  auto environment = QProcessEnvironment::systemEnvironment();
  environment.insert("XDG_RUNTIME_DIR", folder);
  sessionBus_.setProcessEnvironment(environment);
  sessionBus_.start("dbus-daemon",
                    {"--session", "--nofork", "--print-address", "--address=unix:dir=" + folder});
  if (!sessionBus_.waitForReadyRead(30000)) return;
  sessionAddress_ = sessionBus_.readLine().trimmed();
  environment.insert("DBUS_SESSION_BUS_ADDRESS", sessionAddress_);
  launcher_.setProcessEnvironment(environment);
  launcher_.start(TOLVANE_ACCESSIBILITY_BUS, {"--launch-immediately"});

  QDBusConnection session = QDBusConnection::connectToBus(sessionAddress_, "session");
  QString address;
  waitFor([&] {
    const QDBusMessage reply = session.call(
        QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"));
    address = reply.arguments().value(0).toString();
    return reply.type() == QDBusMessage::ReplyMessage && !address.isEmpty();
  });
  session.call(toSet("org.a11y.Status", "IsEnabled", true));
  session.call(toSet("org.a11y.Status", "ScreenReaderEnabled", true));

  client_ = QDBusConnection::connectToBus(address, "accessibility");
  client_.connect(QString(), QString(), "org.a11y.atspi.Event.Object", "StateChanged", this,
                  SLOT(stateChanged(QDBusMessage)));
  const QDBusMessage listening =
      call(kRegistry, "org.a11y.atspi.Registry", "RegisterEvent", {"object:", QStringList(), QString()});
  EXPECT_EQ(listening.type(), QDBusMessage::ReplyMessage) << listening.errorMessage().toStdString();
}

AccessibilityBus::~AccessibilityBus() {
  QDBusConnection::disconnectFromBus("accessibility");
  QDBusConnection::disconnectFromBus("session");
  end(launcher_);
  end(sessionBus_);
}

QDBusMessage AccessibilityBus::call(const Accessible& object, const char* interface, const char* method,
                                    const QVariantList& arguments) const {
  QDBusMessage message = QDBusMessage::createMethodCall(object.service, object.path, interface, method);
  message.setArguments(arguments);
  return client_.call(message);
}

std::vector<std::string> AccessibilityBus::announcements() {
  QCoreApplication::processEvents();
  return std::exchange(announcements_, {});
}

std::optional<Accessible> AccessibilityBus::program(const std::string& wanted) {
  std::optional<Accessible> found;
  waitFor([&] {
    for (const Accessible& candidate : children(kDesktop)) {
      if (name(candidate) == wanted) found = candidate;
    }
    return found.has_value();
  });
  return found;
}

std::vector<Accessible> AccessibilityBus::children(const Accessible& object) const {
  std::vector<Accessible> found;
  const QDBusMessage reply = call(object, "org.a11y.atspi.Accessible", "GetChildren");
  const auto list = reply.arguments().value(0).value<QDBusArgument>();
  if (reply.type() != QDBusMessage::ReplyMessage) return found;
  for (list.beginArray(); !list.atEnd();) found.push_back(readAccessible(list));
  list.endArray();
  return found;
}

std::string AccessibilityBus::name(const Accessible& object) const {
  const QDBusMessage reply =
      call(object, "org.freedesktop.DBus.Properties", "Get", {"org.a11y.atspi.Accessible", "Name"});
  return reply.arguments().value(0).value<QDBusVariant>().variant().toString().toStdString();
}

std::string AccessibilityBus::role(const Accessible& object) const {
  const QDBusMessage reply = call(object, "org.a11y.atspi.Accessible", "GetRoleName");
  const std::string role = reply.arguments().value(0).toString().toStdString();
  // Newer versions use the shorter name.
  return role == "push button" ? "button" : role;
}

bool AccessibilityBus::isChecked(const Accessible& object) const {
  const auto words =
      call(object, "org.a11y.atspi.Accessible", "GetState").arguments().value(0).value<QDBusArgument>();
  uint first = 0;
  words.beginArray();
  words >> first;
  words.endArray();
  return (first >> kCheckedState & 1U) != 0;
}

Accessible AccessibilityBus::cell(const Accessible& table, int row, int column) const {
  const QDBusMessage reply = call(table, "org.a11y.atspi.Table", "GetAccessibleAt", {row, column});
  return reply.type() == QDBusMessage::ReplyMessage
             ? readAccessible(reply.arguments().value(0).value<QDBusArgument>())
             : Accessible{};
}

bool AccessibilityBus::act(const Accessible& object, const std::string& action) const {
  constexpr const char* kInterface = "org.a11y.atspi.Action";
  for (int index = 0; index < 8; ++index) {
    if (call(object, kInterface, "GetName", {index}).arguments().value(0).toString().toStdString() ==
        action) {
      return call(object, kInterface, "DoAction", {index}).arguments().value(0).toBool();
    }
  }
  return false;
}

std::vector<Accessible> AccessibilityBus::tree(const Accessible& object) const {
  std::vector<Accessible> all;
  for (const Accessible& child : children(object)) {
    all.push_back(child);
    if (role(child) == "table") continue;
    const auto below = tree(child);
    all.insert(all.end(), below.begin(), below.end());
  }
  return all;
}

void AccessibilityBus::stateChanged(const QDBusMessage& message) {
  const QVariantList arguments = message.arguments();
  if (arguments.value(0).toString() != "showing" || arguments.value(1).toInt() != 1) return;
  const Accessible source{message.service(), message.path()};
  if (role(source) == "notification") announcements_.push_back(name(source));
}

}  // namespace tolvane::test
