// The words of the command line, as the argument library must see them.
#pragma once

#include <string>

namespace CLI {
class Validator;
}

namespace tolvane::ctl {

/// The word with a mark at its end if the library would not take it as a plain word. [main-thread]
[[nodiscard]] std::string marked(const std::string& word);

/// The text of a message without the marks of its words. [main-thread]
[[nodiscard]] std::string withoutMarks(std::string text);

/// Takes a word as a name: removes its mark and refuses an empty one. [main-thread]
[[nodiscard]] CLI::Validator name();

}  // namespace tolvane::ctl
