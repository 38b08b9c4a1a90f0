// A session's bus with an accessibility bus, and on it a client that does what a screen reader does.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QProcess>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::test {

/// One object of an accessible program: its connection and its path there.
struct Accessible {
  QString service;
  QString path;
};

/// [main-thread]. Its buses end with it.
class AccessibilityBus : public QObject {
  Q_OBJECT

 public:
  /// Starts both buses, their sockets in the folder, and says that a screen reader is there.
  explicit AccessibilityBus(const QString& folder);
  ~AccessibilityBus() override;

  [[nodiscard]] bool isUp() const { return client_.isConnected(); }
  /// Where programs of the session find the bus.
  [[nodiscard]] const QString& sessionAddress() const { return sessionAddress_; }

  /// The names of the notifications that have been shown so far, and forgets them. Each is asked for when its
  /// announcement comes.
  std::vector<std::string> announcements();

  /// The program's top object, as soon as it has come.
  std::optional<Accessible> program(const std::string& name);
  [[nodiscard]] std::vector<Accessible> children(const Accessible& object) const;
  [[nodiscard]] std::string name(const Accessible& object) const;
  [[nodiscard]] std::string role(const Accessible& object) const;
  [[nodiscard]] bool isChecked(const Accessible& object) const;
  [[nodiscard]] Accessible cell(const Accessible& table, int row, int column) const;
  /// Does the object's action of this name; false when it has none.
  bool act(const Accessible& object, const std::string& action) const;

  /// Everything below the object, cells left out.
  [[nodiscard]] std::vector<Accessible> tree(const Accessible& object) const;

 private Q_SLOTS:
  void stateChanged(const QDBusMessage& message);

 private:
  [[nodiscard]] QDBusMessage call(const Accessible& object, const char* interface, const char* method,
                                  const QVariantList& arguments = {}) const;

  QProcess sessionBus_;
  QProcess launcher_;
  QString sessionAddress_;
  QDBusConnection client_{QString()};
  std::vector<std::string> announcements_;
};

}  // namespace tolvane::test
