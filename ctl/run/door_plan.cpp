#include "ctl/run/door_plan.h"

#include "ctl/osc/door.h"

namespace tolvane::ctl {

namespace {

std::optional<Failure> problemOf(const ListenAddress& address, const DoorPlan& plan) {
  if (address.isLoopback() || plan.token) return std::nullopt;
  return Failure{"other machines can reach " + address.text() + "; this needs --token-file",
                 ExitStatus::usage};
}

Failure usage(const std::string& text) {
  return {text, ExitStatus::usage};
}

/// Where a door is to listen; none: the option is not there.
Result<std::optional<ListenAddress>, Failure> addressOf(const std::string& option, const DoorPlan& plan) {
  if (option.empty()) return std::optional<ListenAddress>();
  const auto address = parseListenAddress(option);
  if (!address) return address.error();
  if (const auto problem = problemOf(address.value(), plan)) return *problem;
  return std::optional(address.value());
}

/// What the options say that cannot be.
std::optional<Failure> contradictionOf(const RunOptions& options) {
  if (!options.osc.empty() && !osc::isBuiltIn())
    return usage("this tolvanectl was built without OSC, so --osc is not possible");
  if (!options.http.empty() && !http::isBuiltIn())
    return usage("this tolvanectl was built without HTTP, so --http is not possible");
  if (options.tlsCertificate.empty() != options.tlsKey.empty())
    return usage("--tls-cert and --tls-key belong together");
  if (!options.tlsKey.empty() && options.http.empty()) return usage("TLS is for --http, which is missing");
  return std::nullopt;
}

}  // namespace

Result<DoorPlan, Failure> planDoors(const RunOptions& options) {
  if (const auto failure = contradictionOf(options)) return *failure;
  DoorPlan plan;
  if (!options.tokenPath.empty()) {
    auto token = Token::read(options.tokenPath);
    if (!token) return token.error();
    plan.token = std::move(token).value();
  }
  if (!options.tlsKey.empty()) plan.tls = http::TlsFiles{options.tlsCertificate, options.tlsKey};
  const auto osc = addressOf(options.osc, plan);
  if (!osc) return osc.error();
  plan.osc = osc.value();
  const auto http = addressOf(options.http, plan);
  if (!http) return http.error();
  plan.http = http.value();
  return plan;
}

}  // namespace tolvane::ctl
