#pragma once

#include <QAccessible>
#include <cstdint>
#include <functional>
#include <unordered_map>

namespace tolvane {

/// Accessible children by index. A child is made on the first request; later requests return the same object.
/// The platform's cache owns the children, and the destructor removes them from it. All of it [main-thread].
class AccessibleChildren {
 public:
  AccessibleChildren() = default;
  ~AccessibleChildren();
  AccessibleChildren(const AccessibleChildren&) = delete;
  AccessibleChildren& operator=(const AccessibleChildren&) = delete;

  /// The child with this index. If there is none yet, calls make() and takes ownership of the result.
  QAccessibleInterface* at(std::int64_t index, const std::function<QAccessibleInterface*()>& make);
  /// Calls visit for every child that exists.
  void forEach(const std::function<void(QAccessibleInterface&)>& visit) const;
  /// Deletes the children whose isValid() is false.
  void dropInvalid();

 private:
  std::unordered_map<std::int64_t, QAccessible::Id> ids_;
};

}  // namespace tolvane
