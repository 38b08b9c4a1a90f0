#include "matrix/accessible_children.h"

namespace tolvane {

AccessibleChildren::~AccessibleChildren() {
  for (const auto& [index, id] : ids_) {
    QAccessible::deleteAccessibleInterface(id);
  }
}

QAccessibleInterface* AccessibleChildren::at(std::int64_t index,
                                             const std::function<QAccessibleInterface*()>& make) {
  const auto known = ids_.find(index);
  if (known != ids_.end()) {
    return QAccessible::accessibleInterface(known->second);
  }
  QAccessibleInterface* child = make();
  ids_.emplace(index, QAccessible::registerAccessibleInterface(child));
  return child;
}

void AccessibleChildren::forEach(const std::function<void(QAccessibleInterface&)>& visit) const {
  for (const auto& [index, id] : ids_) {
    visit(*QAccessible::accessibleInterface(id));
  }
}

void AccessibleChildren::dropInvalid() {
  std::erase_if(ids_, [](const auto& entry) {
    const bool invalid = !QAccessible::accessibleInterface(entry.second)->isValid();
    if (invalid) {
      QAccessible::deleteAccessibleInterface(entry.second);
    }
    return invalid;
  });
}

}  // namespace tolvane
