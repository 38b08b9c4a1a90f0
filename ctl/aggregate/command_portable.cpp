// The aggregate commands on a system with its own tool for aggregates.
#include "ctl/aggregate/command.h"
#include "ctl/terminal/messages.h"

namespace tolvane::ctl {

namespace {

ExitStatus refuse() {
  return fail({"aggregates are made, shown and deleted with the system's own setup tool"});
}

}  // namespace

ExitStatus aggregateListCommand(const AggregateOptions& /*options*/) {
  return refuse();
}

ExitStatus aggregateCreateCommand(const AggregateOptions& /*options*/) {
  return refuse();
}

ExitStatus aggregateDeleteCommand(const AggregateOptions& /*options*/) {
  return refuse();
}

}  // namespace tolvane::ctl
