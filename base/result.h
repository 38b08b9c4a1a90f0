#pragma once

#include <utility>
#include <variant>

namespace tolvane {

/// A value, or the error that says why there is none. Asking for the one that is not held throws
/// std::bad_variant_access.
template <class Value, class Error>
class Result {
 public:
  // NOLINTNEXTLINE(google-explicit-constructor)
  Result(Value value) : state_(std::in_place_index<0>, std::move(value)) {}
  // NOLINTNEXTLINE(google-explicit-constructor)
  Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

  explicit operator bool() const noexcept { return state_.index() == 0; }
  [[nodiscard]] const Value& value() const& { return std::get<0>(state_); }
  [[nodiscard]] Value&& value() && { return std::get<0>(std::move(state_)); }
  [[nodiscard]] const Error& error() const& { return std::get<1>(state_); }

 private:
  std::variant<Value, Error> state_;
};

}  // namespace tolvane
