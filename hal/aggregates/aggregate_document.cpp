#include "hal/aggregates/aggregate_document.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>
#include <utility>

#include "hal/aggregates/json_positions.h"

namespace tolvane::hal {

namespace {

using Json = nlohmann::ordered_json;

/// The first error, by JSON pointer. Thrown and caught in this file.
struct Wrong {
  std::string pointer;
  std::string reason;
};

const Json& memberOf(const Json& object, std::string_view pointer, const char* name) {
  const auto found = object.find(name);
  if (found == object.end()) throw Wrong{std::string(pointer), std::string("\"") + name + "\" is missing"};
  return *found;
}

void expect(bool isRight, const std::string& pointer, const char* wanted, const Json& found) {
  if (!isRight) throw Wrong{pointer, std::string("expected ") + wanted + ", found " + found.type_name()};
}

std::string textOf(const Json& object, const std::string& pointer, const char* name) {
  const Json& value = memberOf(object, pointer, name);
  expect(value.is_string(), pointer + "/" + name, "a string", value);
  return value.get<std::string>();
}

std::uint32_t channelsOf(const Json& object, const std::string& pointer, const char* name) {
  const Json& value = memberOf(object, pointer, name);
  expect(value.is_number(), pointer + "/" + name, "a number of channels", value);
  // A double holds small whole numbers exactly, however they are written.
  const auto number = value.get<double>();
  if (number != std::floor(number) || number < 0.0 || number > kMaxMemberChannels) {
    throw Wrong{pointer + "/" + name,
                "expected a whole number from 0 to " + std::to_string(kMaxMemberChannels)};
  }
  return static_cast<std::uint32_t>(number);
}

AggregateMember readMember(const Json& value, const std::string& pointer) {
  expect(value.is_object(), pointer, "an object", value);
  AggregateMember member{textOf(value, pointer, "uid"), textOf(value, pointer, "name"),
                         channelsOf(value, pointer, "inputChannels"),
                         channelsOf(value, pointer, "outputChannels")};
  if (!canBeAggregated(member.uid)) throw Wrong{pointer + "/uid", "this is no device of PipeWire"};
  if (member.inputChannels + member.outputChannels == 0) throw Wrong{pointer, "a device without channels"};
  return member;
}

Aggregate readAggregate(const Json& value, const std::string& pointer) {
  expect(value.is_object(), pointer, "an object", value);
  Aggregate aggregate{textOf(value, pointer, "name"), {}};
  if (const std::string why = whyNoAggregateName(aggregate.name); !why.empty()) {
    throw Wrong{pointer + "/name", why};
  }
  const std::string membersPointer = pointer + "/members";
  const Json& members = memberOf(value, pointer, "members");
  expect(members.is_array(), membersPointer, "an array", members);
  if (members.empty() || members.size() > kMaxAggregateMembers) {
    throw Wrong{membersPointer, "expected 1 to " + std::to_string(kMaxAggregateMembers) + " devices"};
  }
  std::set<std::string> uids;
  for (const Json& item : members) {
    const std::string itemPointer = membersPointer + "/" + std::to_string(aggregate.members.size());
    AggregateMember member = readMember(item, itemPointer);
    if (!uids.insert(member.uid).second) throw Wrong{itemPointer + "/uid", "the same device twice"};
    aggregate.members.push_back(std::move(member));
  }
  return aggregate;
}

std::vector<Aggregate> readAll(const Json& document) {
  expect(document.is_object(), "", "an object", document);
  const Json& list = memberOf(document, "", "aggregates");
  expect(list.is_array(), "/aggregates", "an array", list);
  std::vector<Aggregate> aggregates;
  std::set<std::string> names;
  for (const Json& item : list) {
    const std::string pointer = "/aggregates/" + std::to_string(aggregates.size());
    Aggregate aggregate = readAggregate(item, pointer);
    if (!names.insert(aggregate.name).second) throw Wrong{pointer + "/name", "the same name twice"};
    aggregates.push_back(std::move(aggregate));
  }
  return aggregates;
}

Json jsonOf(const Aggregate& aggregate) {
  Json members = Json::array();
  for (const AggregateMember& member : aggregate.members) {
    members.push_back({{"uid", member.uid},
                       {"name", member.name},
                       {"inputChannels", member.inputChannels},
                       {"outputChannels", member.outputChannels}});
  }
  return {{"name", aggregate.name}, {"members", std::move(members)}};
}

std::string written(const Json& document) {
  // A device names itself, and its name may not be UTF-8.
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace

AggregateDocument::AggregateDocument() : text_(R"({"aggregates": []})") {}

AggregateRead AggregateDocument::parse(std::string text) {
  const LocatedJson parsed = parseLocated(text);
  if (!parsed.error.empty()) return {std::nullopt, parsed.error};
  try {
    std::vector<Aggregate> aggregates = readAll(parsed.value);
    return {AggregateDocument(std::move(text), std::move(aggregates)), {}};
  } catch (const Wrong& wrong) {
    const std::string path = wrong.pointer.empty() ? "" : wrong.pointer + ": ";
    return {std::nullopt, placeOf(text, parsed.offsets.at(wrong.pointer)) + ": " + path + wrong.reason};
  }
}

const Aggregate* AggregateDocument::find(std::string_view name) const noexcept {
  const auto found = std::find_if(aggregates_.begin(), aggregates_.end(),
                                  [&](const Aggregate& aggregate) { return aggregate.name == name; });
  return found == aggregates_.end() ? nullptr : &*found;
}

std::string AggregateDocument::textWith(const Aggregate& aggregate) const {
  Json document = Json::parse(text_);
  document["aggregates"].push_back(jsonOf(aggregate));
  return written(document);
}

std::string AggregateDocument::textWithout(std::string_view name) const {
  Json document = Json::parse(text_);
  Json kept = Json::array();
  for (Json& item : document["aggregates"]) {
    if (item.at("name").get_ref<const std::string&>() != name) kept.push_back(std::move(item));
  }
  document["aggregates"] = std::move(kept);
  return written(document);
}

}  // namespace tolvane::hal
