// Finds out from the kernel's process file system who uses a card.
#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string_view>

namespace tolvane::hal::alsa {

/// The card's number in the path of one of its device files, as in "/dev/snd/pcmC1D0p" or
/// "/dev/snd/controlC1"; none for any other path. [any-thread]
std::optional<int> cardOfDeviceFile(std::string_view path) noexcept;

/// The numbers of the cards that a running sound server uses: PipeWire, one of its session managers,
/// PulseAudio or JACK has a device file of the card open. A server that closes an idle card's PCM keeps the
/// control file open. This user cannot see the open files of another user's server. Such a server is found
/// only while it streams, because the kernel names the owner of an open PCM. `proc` is the path of the
/// process file system. [not-io]
std::set<int> cardsOfSoundServers(const std::filesystem::path& proc = "/proc");

/// The channels, rate and period of a PCM that somebody has open now. A plain value.
struct PcmInUse {
  unsigned channels = 0;
  unsigned rateHz = 0;
  unsigned periodFrames = 0;

  bool operator==(const PcmInUse&) const = default;
};

/// Parses the text of a substream's hw_params file; none if it says "closed" or has another form.
/// [any-thread]
std::optional<PcmInUse> parsePcmInUse(std::string_view text);

/// The settings of the PCM device of that name, as in "pcm0p", while it is in use; none if it is not.
/// [not-io]
std::optional<PcmInUse> pcmInUse(int card, std::string_view pcm, const std::filesystem::path& proc = "/proc");

}  // namespace tolvane::hal::alsa
