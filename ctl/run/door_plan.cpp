#include "ctl/run/door_plan.h"

#include "ctl/osc/door.h"

namespace tolvane::ctl {

namespace {

std::optional<Failure> problemOf(const ListenAddress& address, const DoorPlan& plan) {
  if (address.isLoopback() || plan.token) return std::nullopt;
  return Failure{"other machines can reach " + address.text() + "; this needs --token-file",
                 ExitStatus::usage};
}

}  // namespace

Result<DoorPlan, Failure> planDoors(const RunOptions& options) {
  DoorPlan plan;
  if (!options.tokenPath.empty()) {
    auto token = Token::read(options.tokenPath);
    if (!token) return token.error();
    plan.token = std::move(token).value();
  }
  if (options.osc.empty()) return plan;
  if (!osc::isBuiltIn())
    return Failure{"this program was built without OSC, so --osc is not possible", ExitStatus::usage};
  const auto address = parseListenAddress(options.osc);
  if (!address) return address.error();
  if (const auto problem = problemOf(address.value(), plan)) return *problem;
  plan.osc = address.value();
  return plan;
}

}  // namespace tolvane::ctl
