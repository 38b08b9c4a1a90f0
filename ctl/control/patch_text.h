// The text of a patch file in pieces, so that other routes can be written into it and everything else stays.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ctl/control/route_list.h"

namespace tolvane::ctl::control {

/// [any-thread]
class PatchText {
 public:
  /// An empty patch.
  PatchText() = default;

  /// Takes a text that decodePatch() has read as these routes. An empty text is an empty patch.
  PatchText(std::string_view text, std::span<const PatchConnection> routes);

  /// The routes with their labels. A route's label is the text of its member "label", if it has one.
  [[nodiscard]] std::vector<Route> routes() const;

  /// The text with these routes instead, in their order. A route that the text has keeps its white space, its
  /// unknown members, and the form of each number that is unchanged; routes of the same channels are taken
  /// for each other in order. Unchanged routes give the text as it was, byte for byte. A gain that is not
  /// finite must not be among them.
  [[nodiscard]] std::string with(std::span<const Route> routes) const;

 private:
  /// Where a member's value is in the element's text.
  struct Member {
    std::string key;  // "inputChannel", "outputChannel", "gain", "active" or "label"
    std::size_t begin;
    std::size_t end;
  };
  struct Element {
    std::string before;  // white space
    std::string text;
    std::string after;            // white space
    std::vector<Member> members;  // those with the keys above, in order
    Route route;
  };
  class Scanner;

  [[nodiscard]] static std::string changed(const Element& element, const Route& route);

  std::string head_ = "[";  // up to the bracket
  std::vector<Element> elements_;
  std::string inside_;      // white space of an empty array
  std::string tail_ = "]";  // from the closing bracket on
};

}  // namespace tolvane::ctl::control
