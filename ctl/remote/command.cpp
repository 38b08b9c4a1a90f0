#include "ctl/remote/command.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <utility>

#include <nlohmann/json.hpp>

#include "ctl/control/json.h"
#include "ctl/doors/token.h"
#include "ctl/remote/link.h"
#include "ctl/remote/report.h"
#include "ctl/terminal/json_text.h"
#include "ctl/terminal/messages.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

using namespace control;
using remote::Link;
using RemoteJson = nlohmann::ordered_json;

constexpr std::chrono::seconds kPatience{10};
constexpr std::int64_t kHelloId = 1;
constexpr std::int64_t kCommandId = 2;

void print(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

/// The text as JSON; an object in any case.
Result<RemoteJson, Failure> parsed(const RemoteOptions& options, const Result<std::string, Failure>& text) {
  if (!text) return text.error();
  RemoteJson json = RemoteJson::parse(text.value(), nullptr, false);
  if (json.is_object()) return json;
  return Failure{about(options.address, "what is there is no run")};
}

/// Waits for the answer with this id. Failure: also if it is an error.
Result<RemoteJson, Failure> await(Link& link, const RemoteOptions& options, std::int64_t id) {
  for (;;) {
    auto json = parsed(options, link.receive(kPatience));
    if (!json) return json.error();
    RemoteJson answer = std::move(json).value();
    if (answer.value("id", std::int64_t{0}) != id) continue;
    if (answer.value("ok", false)) return answer;
    return Failure{printable(answer.value("error", std::string("refused")))};
  }
}

std::optional<Failure> sayHello(Link& link, const RemoteOptions& options, const std::optional<Token>& token) {
  const auto welcome = parsed(options, link.receive(kPatience));
  if (!welcome) return welcome.error();
  if (!token) {
    if (!welcome.value().value("token", false)) return std::nullopt;
    return Failure{about(options.address, "this run needs its token; see --token-file"), ExitStatus::usage};
  }
  link.send(encodeRequest({Hello{token->secret()}, kHelloId, 0}));
  const auto answer = await(link, options, kHelloId);
  return answer ? std::nullopt : std::optional(answer.error());
}

ExitStatus ask(Link& link, const RemoteOptions& options) {
  link.send(encodeRequest({*options.command, kCommandId, 0}));
  const auto answer = await(link, options, kCommandId);
  if (!answer) return fail(answer.error());
  if (!options.json) {
    print(remote::answerText(answer.value()));
    return ExitStatus::done;
  }
  RemoteJson json = answer.value();
  json.erase("id");
  print(jsonText(json, -1));
  return ExitStatus::done;
}

ExitStatus watch(Link& link, const RemoteOptions& options) {
  link.send(encodeRequest({Subscribe{true, options.meters}, kCommandId, 0}));
  if (const auto answer = await(link, options, kCommandId); !answer) return fail(answer.error());
  for (;;) {
    const auto event = parsed(options, link.receive(std::nullopt));
    if (!event) return fail(event.error());
    print(options.json ? jsonText(event.value(), -1) : remote::eventText(event.value()));
  }
}

ExitStatus connectAndAsk(const RemoteOptions& options) {
  std::optional<Token> token;
  if (!options.tokenPath.empty()) {
    auto read = Token::read(options.tokenPath);
    if (!read) return fail(read.error());
    token = std::move(read).value();
  }
  const bool isEncrypted = options.tls || !options.tlsAuthority.empty();
  auto opened = remote::openLink({options.address, isEncrypted, options.tlsAuthority});
  if (!opened) return fail(opened.error());
  const std::unique_ptr<Link> link = std::move(opened).value();
  if (const auto failure = sayHello(*link, options, token)) return fail(*failure);
  return options.watch ? watch(*link, options) : ask(*link, options);
}

}  // namespace

ExitStatus remoteCommand(const RemoteOptions& options) {
  if (!remote::isBuiltIn())
    return fail({"this tolvanectl was built without HTTP, so ctl is not possible", ExitStatus::usage});
  try {
    return connectAndAsk(options);
  } catch (const RemoteJson::exception&) {
    return fail({about(options.address, "what is there is no run")});
  }
}

}  // namespace tolvane::ctl
