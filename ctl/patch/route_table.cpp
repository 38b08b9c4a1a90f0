#include "ctl/patch/route_table.h"

#include <algorithm>
#include <utility>

#include "ctl/terminal/decimal.h"
#include "ctl/terminal/printable.h"
#include "ctl/terminal/text_table.h"

namespace tolvane::ctl {

namespace {

std::string inputNameOf(const PatchConnection& route, const RouteNames& names) {
  return names.ofInput ? names.ofInput(route.inputChannel) : std::string();
}

std::string outputNameOf(const PatchConnection& route, const RouteNames& names) {
  return names.ofOutput ? names.ofOutput(route.outputChannel) : std::string();
}

std::string nameCell(const std::string& name) {
  return name.empty() ? "-" : shortened(name);
}

}  // namespace

std::string oneBased(std::int64_t channel) {
  if (channel < 0) return std::to_string(channel + 1);
  return std::to_string(static_cast<std::uint64_t>(channel) + 1);
}

std::string routeTable(std::span<const PatchConnection> routes, const RouteNames& names) {
  if (routes.empty()) return "no routes\n";
  using enum TextTable::Align;
  std::vector<TextTable::Column> columns{
      {"input", right}, {"output", right}, {"gain", right}, {"dB", right}, {"active", left}};
  const bool areNamed = std::any_of(routes.begin(), routes.end(), [&](const PatchConnection& route) {
    return !inputNameOf(route, names).empty() || !outputNameOf(route, names).empty();
  });
  if (areNamed) columns.insert(columns.end(), {{"input name", left}, {"output name", left}});
  TextTable table(std::move(columns));
  for (const PatchConnection& route : routes) {
    table.addRow({oneBased(route.inputChannel), oneBased(route.outputChannel), shortestDecimal(route.gain),
                  decibels(route.gain), route.active ? "yes" : "no", nameCell(inputNameOf(route, names)),
                  nameCell(outputNameOf(route, names))});
  }
  return table.text();
}

}  // namespace tolvane::ctl
