#include "ctl/patch/route_table.h"

#include "ctl/terminal/decimal.h"
#include "ctl/terminal/text_table.h"

namespace tolvane::ctl {

std::string oneBased(std::int64_t channel) {
  if (channel < 0) return std::to_string(channel + 1);
  return std::to_string(static_cast<std::uint64_t>(channel) + 1);
}

std::string routeTable(std::span<const PatchConnection> routes) {
  if (routes.empty()) return "no routes\n";
  using enum TextTable::Align;
  TextTable table({{"input", right}, {"output", right}, {"gain", right}, {"dB", right}, {"active", left}});
  for (const PatchConnection& route : routes) {
    table.addRow({oneBased(route.inputChannel), oneBased(route.outputChannel), shortestDecimal(route.gain),
                  decibels(route.gain), route.active ? "yes" : "no"});
  }
  return table.text();
}

}  // namespace tolvane::ctl
