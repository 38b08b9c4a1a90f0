#include "hal/jack/jack_channels.h"

#include <algorithm>
#include <array>
#include <utility>

#include "hal/jack/jack_devices.h"
#include "hal/support/utf8.h"

namespace tolvane::hal {
namespace {

// The library exports a pointer to this text; old ones do not.
constexpr const char* kPrettyName = "http://jackaudio.org/metadata/pretty-name";

/// Removes the digits at the end; returns false if there are none.
bool removeNumber(std::string_view& text) {
  const std::size_t last = text.find_last_not_of("0123456789");
  const std::size_t length = last == std::string_view::npos ? 0 : last + 1;
  return length < std::exchange(text, text.substr(0, length)).size();
}

/// The aliases by which jackd's drivers number their ports. That for FireWire has the channel's name in the
/// port's name, and the number in the alias.
bool isServersOwn(std::string_view alias) {
  if (!removeNumber(alias)) return false;
  if (alias == "system:capture_" || alias == "system:playback_") return true;
  const bool isNumbered = alias.ends_with(":in") || alias.ends_with(":out");
  return isNumbered && alias.substr(0, alias.find(':')).ends_with("_pcm");
}

std::string_view withoutClient(std::string_view name, std::string_view client) {
  const bool isClients = name.starts_with(client) && name.substr(client.size()).starts_with(':');
  const std::string_view rest = isClients ? name.substr(client.size() + 1) : name;
  return rest.empty() ? name : rest;
}

std::vector<std::string> aliasesOf(const JackLibrary& library, const jack_port_t* port) {
  // The server does not end an alias that fills its room.
  const auto room = static_cast<std::size_t>(library.portNameSize()) + 1;
  std::array<std::string, 2> texts{std::string(room, '\0'), std::string(room, '\0')};
  const std::array<char*, 2> buffers{texts[0].data(), texts[1].data()};
  library.portGetAliases(port, buffers.data());
  std::vector<std::string> aliases;
  aliases.reserve(texts.size());
  for (const std::string& text : texts) aliases.emplace_back(text.c_str());
  return aliases;
}

std::string prettyNameOf(const JackLibrary& library, const jack_port_t* port) {
  if (library.portUuid == nullptr || library.getProperty == nullptr) return {};
  char* value = nullptr;
  char* type = nullptr;
  if (library.getProperty(library.portUuid(port), kPrettyName, &value, &type) != 0) return {};
  std::string name = value != nullptr ? value : "";
  library.free(value);
  library.free(type);
  return name;
}

}  // namespace

ChannelInfo jackChannel(std::string_view port, const std::string& prettyName,
                        const std::vector<std::string>& aliases) {
  const std::string_view client = jackClientOf(port);
  ChannelInfo channel{std::string(withoutClient(port, client)), std::string(client),
                      std::string(withoutClient(port, client))};
  const auto alias = std::find_if(aliases.begin(), aliases.end(), [](const std::string& candidate) {
    return !candidate.empty() && !isServersOwn(candidate);
  });
  if (!prettyName.empty()) {
    channel.name = prettyName;
  } else if (alias != aliases.end()) {
    channel.name = withoutClient(*alias, client);
  }
  return channel;
}

std::vector<ChannelInfo> jackChannels(const JackLibrary& library, jack_client_t* client,
                                      const std::vector<std::string>& ports) {
  std::vector<ChannelInfo> channels;
  for (const std::string& name : ports) {
    const jack_port_t* const port = library.portByName(client, name.c_str());
    const bool isThere = port != nullptr;
    channels.push_back(jackChannel(name, isThere ? prettyNameOf(library, port) : std::string(),
                                   isThere ? aliasesOf(library, port) : std::vector<std::string>()));
  }
  return channels;
}

void setChannelAlias(const JackLibrary& library, jack_port_t* port, const ChannelInfo& channel) {
  std::string alias = validUtf8(channel.name);
  std::replace(alias.begin(), alias.end(), ':', '_');
  // The server keeps one byte less than this size, and no NUL after an alias that fills its room.
  alias = cutUtf8(std::move(alias), static_cast<std::size_t>(library.portNameSize()) - 2);
  if (!alias.empty()) library.portSetAlias(port, alias.c_str());
}

}  // namespace tolvane::hal
