#include "ctl/aggregate/options.h"

#include <CLI/CLI.hpp>

#include "ctl/aggregate/command.h"
#include "ctl/arguments/common_options.h"
#include "ctl/arguments/words.h"

namespace tolvane::ctl {

void declareAggregate(CLI::App& program, AggregateOptions& options, ExitStatus& status) {
  CLI::App* command = program.add_subcommand("aggregate", "Use several devices as one");
  command->require_subcommand(1);
  CLI::App* list = command->add_subcommand("list", "List the aggregates and the channels of their devices");
  list->add_flag("--json", options.json, "as a JSON array");
  declareWait(*list, options.waitSeconds);
  list->callback([&] { status = aggregateListCommand(options); });
  CLI::App* create = command->add_subcommand("create", "Make one of devices, in this order");
  create->add_option("NAME", options.name, "what it is to be called")->required()->transform(name());
  create
      ->add_option("DEVICE", options.devices,
                   "names, identifiers, or lasting identities; with :monitor appended, what its outputs play")
      ->required()
      ->transform(name());
  declareWait(*create, options.waitSeconds);
  create->callback([&] { status = aggregateCreateCommand(options); });
  CLI::App* remove = command->add_subcommand("delete", "Forget one; its devices stay");
  remove->add_option("NAME", options.name, "what it is called")->required()->transform(name());
  remove->callback([&] { status = aggregateDeleteCommand(options); });
}

}  // namespace tolvane::ctl
