// Another program that has reserved a card.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <dbus/dbus.h>

#include "hal/support/private_bus.h"

namespace tolvane::test {

/// Owns the reservation of a card on the bus, as sound servers do, until it agrees to release it.
class CardOwner {
 public:
  enum class Manner { releases, refuses, isSilent, leaves };

  /// `onRelease` is called before it agrees. Throws std::runtime_error if somebody has reserved the card.
  CardOwner(
      int card, Manner manner, std::function<void()> onRelease = [] {});
  CardOwner(const CardOwner&) = delete;
  CardOwner& operator=(const CardOwner&) = delete;
  ~CardOwner();

  /// The priorities of those who asked.
  [[nodiscard]] std::vector<std::int32_t> asked() const;

 private:
  void serve();
  void answer(DBusMessage* call);

  const Manner manner_;
  const std::function<void()> onRelease_;
  DBusConnection* connection_;
  mutable std::mutex mutex_;
  std::vector<std::int32_t> asked_;  // guarded by mutex_
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

/// A program that asks the bus and a card's owner.
class Asker {
 public:
  explicit Asker(int card);
  Asker(const Asker&) = delete;
  Asker& operator=(const Asker&) = delete;
  ~Asker();

  /// True if somebody has reserved the card.
  [[nodiscard]] bool isReserved() const;
  /// True if the owner agrees to release it.
  [[nodiscard]] bool requestRelease(std::int32_t priority) const;
  /// True if the bus gives the card's name to this program.
  [[nodiscard]] bool takeName() const;
  /// The property of the owner; empty if it has none.
  [[nodiscard]] std::string property(const char* name) const;
  [[nodiscard]] std::int32_t priority() const;
  [[nodiscard]] std::size_t propertyCount() const;
  /// Asks for all properties twice, the second time after `gap`. Returns the number of answers.
  [[nodiscard]] int answersToTwo(std::chrono::microseconds gap) const;

 private:
  [[nodiscard]] DBusMessage* newGet(const char* name) const;
  [[nodiscard]] DBusMessage* get(const char* name) const;

  const std::string name_;
  const std::string path_;
  DBusConnection* connection_;
};

}  // namespace tolvane::test
