#pragma once

#include <QAccessible>
#include <cstdint>
#include <functional>
#include <unordered_map>

namespace tolvane {

/// The accessible children that somebody has asked for, by index: made on the first request, the same object
/// ever after. Registered with the platform's cache, which owns them; the destructor takes them out of it.
/// All of it [main-thread].
class AccessibleChildren {
 public:
  AccessibleChildren() = default;
  ~AccessibleChildren();
  AccessibleChildren(const AccessibleChildren&) = delete;
  AccessibleChildren& operator=(const AccessibleChildren&) = delete;

  /// The child with this index; make() gives a new one, whose ownership is taken.
  QAccessibleInterface* at(std::int64_t index, const std::function<QAccessibleInterface*()>& make);
  /// Calls visit for every child that exists.
  void forEach(const std::function<void(QAccessibleInterface&)>& visit) const;
  /// Deletes the children that say they are no longer valid.
  void dropInvalid();

 private:
  std::unordered_map<std::int64_t, QAccessible::Id> ids_;
};

}  // namespace tolvane
