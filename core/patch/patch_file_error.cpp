#include "core/patch/patch_file.h"

namespace tolvane {

std::string PatchFileError::message() const {
  std::string where;
  const auto add = [&where](const std::string& part) {
    if (!where.empty()) where += ", ";
    where += part;
  };
  if (element) add("element " + std::to_string(*element));
  if (!member.empty()) add("member \"" + member + "\"");
  if (byteOffset) add("byte " + std::to_string(*byteOffset));
  return where.empty() ? reason : where + ": " + reason;
}

}  // namespace tolvane
