// Who has a card: what the kernel tells of it in its process file system.
#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string_view>

namespace tolvane::hal::alsa {

/// The card's number in the path of one of its device files, as in "/dev/snd/pcmC1D0p" or
/// "/dev/snd/controlC1"; none of any other path. [any-thread]
std::optional<int> cardOfDeviceFile(std::string_view path) noexcept;

/// The numbers of the cards that a running sound server has: one of PipeWire, its session managers,
/// PulseAudio or JACK has a device file of the card open. A server that leaves a card's PCM while nobody
/// plays keeps its control file open; what this user may not see of another's process is known while it
/// streams, by the owner that the kernel names. `proc` is where the process file system is. [not-io]
std::set<int> cardsOfSoundServers(const std::filesystem::path& proc = "/proc");

/// The channels, rate and period that somebody has set a PCM to that is open now. A plain value.
struct PcmInUse {
  unsigned channels = 0;
  unsigned rateHz = 0;
  unsigned periodFrames = 0;

  bool operator==(const PcmInUse&) const = default;
};

/// Reads the text of a substream's hw_params file; none when it says "closed" or is no such text.
/// [any-thread]
std::optional<PcmInUse> parsePcmInUse(std::string_view text);

/// What the PCM device of that name, as in "pcm0p", is in use with; none when it is not. [not-io]
std::optional<PcmInUse> pcmInUse(int card, std::string_view pcm, const std::filesystem::path& proc = "/proc");

}  // namespace tolvane::hal::alsa
