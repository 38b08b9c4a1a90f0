// A session bus with an accessibility bus, and a client on it that acts as a screen reader.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QProcess>
#include <optional>
#include <string>
#include <vector>

namespace tolvane::test {

/// One object of an accessible program: the program's connection and the object's path on it.
struct Accessible {
  QString service;
  QString path;
};

/// The destructor ends both buses. [main-thread]
class AccessibilityBus : public QObject {
  Q_OBJECT

 public:
  /// Starts both buses, with their sockets in the folder, and reports that a screen reader is present.
  explicit AccessibilityBus(const QString& folder);
  ~AccessibilityBus() override;

  [[nodiscard]] bool isUp() const { return client_.isConnected(); }
  /// Bus address for programs of the session.
  [[nodiscard]] const QString& sessionAddress() const { return sessionAddress_; }

  /// Returns and clears the names of the notifications shown so far. Each name is queried when its
  /// announcement arrives.
  std::vector<std::string> announcements();

  /// The program's top object. Waits until the program has registered it.
  std::optional<Accessible> program(const std::string& name);
  [[nodiscard]] std::vector<Accessible> children(const Accessible& object) const;
  [[nodiscard]] std::string name(const Accessible& object) const;
  [[nodiscard]] std::string role(const Accessible& object) const;
  [[nodiscard]] bool isChecked(const Accessible& object) const;
  [[nodiscard]] Accessible cell(const Accessible& table, int row, int column) const;
  /// Performs the object's action of this name. Returns false if it has none.
  bool act(const Accessible& object, const std::string& action) const;

  /// Every object below this one, except cells.
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
