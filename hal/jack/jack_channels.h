// The names of a device's channels, from what the server's users have said of its ports.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "hal/driver/device_info.h"
#include "hal/jack/jack_library.h"

namespace tolvane::hal {

/// The names of the channel behind a port, "client:port". Its name is the port's pretty name; if there is
/// none, the first alias that is not jackd's own number ("alsa_pcm:hw:PCH:out1", "dummy_pcm:dummy:out1",
/// "system:capture_1"); else the port's part of its name. An alias is taken without the client in front of
/// it. Empty aliases do not count.
[[nodiscard]] ChannelInfo jackChannel(std::string_view port, const std::string& prettyName,
                                      const std::vector<std::string>& aliases);

/// The names of the channels behind these ports of the client's server. [not-io]
[[nodiscard]] std::vector<ChannelInfo> jackChannels(const JackLibrary& library, jack_client_t* client,
                                                    const std::vector<std::string>& ports);

/// Gives our own port, which serves this channel, the channel's name as an alias. Does nothing without a
/// name. The alias has no colon: the server must not take it for another port's full name. [not-io]
void setChannelAlias(const JackLibrary& library, jack_port_t* port, const ChannelInfo& channel);

}  // namespace tolvane::hal
