// Reads arbitrary bytes as the file of named aggregates. An error must have a text in one line. In a valid
// file, every aggregate must keep the documented promises, and adding or removing one must change nothing
// else.
#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "hal/aggregates/aggregate_document.h"
#include "require.h"

namespace tolvane::fuzz {
namespace {

using hal::Aggregate;
using hal::AggregateDocument;

void checkAggregates(const std::vector<Aggregate>& aggregates) {
  std::set<std::string> names;
  for (const Aggregate& aggregate : aggregates) {
    require(names.insert(aggregate.name).second);
    require(!aggregate.members.empty() && aggregate.members.size() <= hal::kMaxAggregateMembers);
    std::set<std::string> uids;
    for (const hal::AggregateMember& member : aggregate.members) {
      require(uids.insert(member.uid).second);
      require(member.inputChannels <= hal::kMaxMemberChannels);
      require(member.outputChannels <= hal::kMaxMemberChannels);
    }
  }
}

void checkHolds(const std::string& text, const std::vector<Aggregate>& expected) {
  const auto read = AggregateDocument::parse(text);
  require(read.document && read.document->aggregates() == expected);
}

void checkAdding(const AggregateDocument& document) {
  const Aggregate added{"An aggregate that no input names",
                        {{"pipewire:a", "A", 2, 0}, {"pipewire:b\"\\", "\n", 0, 1024}}};
  if (document.find(added.name) != nullptr) return;
  std::vector<Aggregate> expected = document.aggregates();
  expected.push_back(added);
  checkHolds(document.textWith(added), expected);
}

void checkRemoving(const AggregateDocument& document) {
  const std::vector<Aggregate>& all = document.aggregates();
  for (std::size_t i = 0; i < std::min<std::size_t>(all.size(), 3); ++i) {
    require(document.find(all[i].name) == &all[i]);
    std::vector<Aggregate> expected = all;
    expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(i));
    checkHolds(document.textWithout(all[i].name), expected);
  }
}

void readAndChange(std::string text) {
  const auto read = AggregateDocument::parse(std::move(text));
  if (!read.document) {
    require(!read.error.empty() && read.error.find('\n') == std::string::npos);
    return;
  }
  require(read.error.empty());
  checkAggregates(read.document->aggregates());
  checkAdding(*read.document);
  checkRemoving(*read.document);
}

}  // namespace
}  // namespace tolvane::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  tolvane::fuzz::readAndChange({reinterpret_cast<const char*>(bytes), size});
  return 0;
}
