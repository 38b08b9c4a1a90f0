#include "ctl/aggregate/list.h"

#include <nlohmann/json.hpp>

#include "ctl/terminal/json_text.h"
#include "ctl/terminal/text_table.h"

namespace tolvane::ctl {

namespace {

/// The range of `count` channels from `first` on: "5-8", "5", or "-" if `count` is 0. Advances `first` by
/// `count`.
std::string channelRange(std::uint32_t& first, std::uint32_t count) {
  const std::uint32_t begin = first;
  first += count;
  if (count == 0) return "-";
  if (count == 1) return std::to_string(begin);
  return std::to_string(begin) + '-' + std::to_string(first - 1);
}

}  // namespace

std::string aggregateTable(const std::vector<hal::Aggregate>& aggregates,
                           const std::set<std::string>& there) {
  using enum TextTable::Align;
  TextTable table(
      {{"aggregate", left}, {"device", left}, {"inputs", right}, {"outputs", right}, {"there", left}});
  for (const hal::Aggregate& aggregate : aggregates) {
    std::uint32_t input = 1;
    std::uint32_t output = 1;
    for (const hal::AggregateMember& member : aggregate.members) {
      table.addRow({aggregate.name, member.name, channelRange(input, member.inputChannels),
                    channelRange(output, member.outputChannels), there.contains(member.uid) ? "yes" : "no"});
    }
  }
  return table.text();
}

std::string aggregateJson(const std::vector<hal::Aggregate>& aggregates, const std::set<std::string>& there) {
  using Json = nlohmann::ordered_json;
  Json array = Json::array();
  for (const hal::Aggregate& aggregate : aggregates) {
    Json members = Json::array();
    for (const hal::AggregateMember& member : aggregate.members) {
      members.push_back({{"uid", member.uid},
                         {"name", member.name},
                         {"inputChannels", member.inputChannels},
                         {"outputChannels", member.outputChannels},
                         {"there", there.contains(member.uid)}});
    }
    array.push_back({{"name", aggregate.name}, {"members", std::move(members)}});
  }
  return jsonText(array, 2);
}

}  // namespace tolvane::ctl
