#include "ctl/remote/options.h"

#include <cstdlib>
#include <limits>
#include <memory>

#include <CLI/CLI.hpp>

#include "ctl/arguments/numbers.h"
#include "ctl/arguments/words.h"
#include "ctl/remote/command.h"

namespace tolvane::ctl {

namespace {

using namespace control;

/// The words of a command, as they are parsed.
struct Words {
  int input = 0;
  int output = 0;
  std::string text;
  std::string number;

  [[nodiscard]] RouteKey key() const { return {input - 1, output - 1}; }
  [[nodiscard]] double value() const {
    return number == "off" ? -std::numeric_limits<double>::infinity() : std::strtod(number.c_str(), nullptr);
  }
};

class Declaration {
 public:
  Declaration(CLI::App& remote, RemoteOptions& options, ExitStatus& status)
      : remote_(remote), options_(options), status_(status) {}

  /// Adds a command. `of` makes the request of its words.
  template <class Of>
  CLI::App* add(const char* name, const char* purpose, const std::shared_ptr<Words>& words, Of of) {
    CLI::App* command = remote_.add_subcommand(name, purpose);
    command->callback([&options = options_, &status = status_, words, of] {
      options.command = of(*words);
      status = remoteCommand(options);
    });
    return command;
  }
  /// The same for a command about a route.
  template <class Of>
  CLI::App* addForRoute(const char* name, const char* purpose, const std::shared_ptr<Words>& words, Of of) {
    CLI::App* command = add(name, purpose, words, of);
    constexpr int kLargest = std::numeric_limits<int>::max();
    command->add_option("IN", words->input, "the input, from 1")
        ->required()
        ->transform(wholeNumber(1, kLargest));
    command->add_option("OUT", words->output, "the output, from 1")
        ->required()
        ->transform(wholeNumber(1, kLargest));
    return command;
  }
  void addJson(CLI::App* command) { command->add_flag("--json", options_.json, "as it came, in JSON"); }

 private:
  CLI::App& remote_;
  RemoteOptions& options_;
  ExitStatus& status_;
};

template <class Kind>
Command plain(const Words& /*words*/) {
  return Kind{};
}

void declareRoutes(Declaration& add) {
  const auto words = std::make_shared<Words>();
  add.addForRoute("route", "Set the linear gain of a route, or add the route", words,
                  [](const Words& w) -> Command {
                    return SetRoute{w.key(), static_cast<float>(w.value())};
                  })
      ->add_option("GAIN", words->number, "1 changes nothing")
      ->required()
      ->check(requireDecimal);
  add.addForRoute("gain", "Set the level of a route", words,
                  [](const Words& w) -> Command {
                    return SetGain{w.key(), w.value()};
                  })
      ->add_option("DB", words->number, "decibels, or \"off\" for silence")
      ->required()
      ->check(requireLevel);
  add.addForRoute("mute", "Mute a route", words, [](const Words& w) -> Command {
    return SetMute{w.key(), true};
  });
  add.addForRoute("unmute", "Let a route sound again", words, [](const Words& w) -> Command {
    return SetMute{w.key(), false};
  });
  add.addForRoute("label", "Name a route", words,
                  [](const Words& w) -> Command {
                    return SetLabel{w.key(), w.text};
                  })
      ->add_option("TEXT", words->text, "at most 200 bytes")
      ->required()
      ->transform(name());
  add.addForRoute("remove", "Remove a route", words,
                  [](const Words& w) -> Command { return RemoveRoute{w.key()}; });
}

void declareScenes(Declaration& add) {
  const auto words = std::make_shared<Words>();
  CLI::App* recall = add.add("scene", "Recall a scene", words, [](const Words& w) -> Command {
    if (w.input > 0) return RecallScene{std::int64_t{w.input}};
    return RecallScene{w.text};
  });
  auto* byName = recall->add_option("NAME", words->text, "its name")->transform(name());
  auto* byNumber = recall->add_option("--number", words->input, "its place in the list, from 1")
                       ->transform(wholeNumber(1, std::numeric_limits<int>::max()))
                       ->type_name("N");
  byName->excludes(byNumber);
  recall->require_option(1);
  add.add("save-scene", "Save the routes as a scene", words,
          [](const Words& w) -> Command { return SaveScene{w.text}; })
      ->add_option("NAME", words->text, "its name")
      ->required()
      ->transform(name());
  add.addJson(add.add("scenes", "List the scenes", words, &plain<ListScenes>));
}

void declareOthers(Declaration& add) {
  const auto words = std::make_shared<Words>();
  add.add("undo", "Take back the last change", words, &plain<Undo>);
  add.add("redo", "Make it again", words, &plain<Redo>);
  add.add("save", "Write the routes into the patch file", words, &plain<Save>);
  add.add("reset-clips", "Clear the held clips", words, &plain<ResetClips>);
  add.addJson(add.add("status", "Print what the device does", words, &plain<GetStatus>));
  add.addJson(add.add("dump", "Print the routes", words, &plain<Dump>));
}

}  // namespace

void declareRemote(CLI::App& program, RemoteOptions& options, ExitStatus& status) {
  CLI::App* remote = program.add_subcommand("ctl", "Control a run that was started with --http");
  remote->require_subcommand(1);
  remote->add_option("--at", options.address, "where the run is [localhost:9001]")
      ->transform(name())
      ->type_name("HOST:PORT");
  remote->add_option("--token-file", options.tokenPath, "the run's token; mode 0600")
      ->transform(name())
      ->type_name("FILE");
  remote->add_flag("--tls", options.tls, "encrypt, and check the run's certificate");
  remote->add_option("--tls-ca", options.tlsAuthority, "with a certificate of this authority (PEM)")
      ->transform(name())
      ->type_name("FILE");
  Declaration add(*remote, options, status);
  declareRoutes(add);
  declareScenes(add);
  declareOthers(add);
  CLI::App* watch = remote->add_subcommand("watch", "Print every change until a signal");
  watch->add_flag("--meters", options.meters, "also levels; with --json only");
  add.addJson(watch);
  watch->callback([&] {
    options.watch = true;
    status = remoteCommand(options);
  });
}

}  // namespace tolvane::ctl
