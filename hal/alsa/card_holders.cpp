#include "hal/alsa/card_holders.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace tolvane::hal::alsa {

namespace {

namespace fs = std::filesystem;

/// The kernel keeps only the first 15 bytes of a process's name.
constexpr std::string_view kServers[] = {"pipewire",   "pipewire-pulse", "pipewire-media-", "wireplumber",
                                         "pulseaudio", "jackd",          "jackdbus"};

std::optional<int> leadingNumber(std::string_view text) noexcept {
  int number = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
  if (parsed.ec != std::errc() || number < 0) return std::nullopt;
  return number;
}

/// The number after "key:" in a text with one key per line.
std::optional<int> numberAfter(std::string_view text, std::string_view key) noexcept {
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    if (line.substr(0, key.size()) != key) continue;
    const std::size_t colon = line.find_first_not_of(' ', key.size());
    if (colon == std::string_view::npos || line[colon] != ':') continue;
    const std::size_t value = line.find_first_not_of(" \t", colon + 1);
    if (value != std::string_view::npos) return leadingNumber(line.substr(value));
  }
  return std::nullopt;
}

std::string textOf(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
  std::error_code error;
  std::vector<fs::path> entries;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    entries.push_back(at->path());
  }
  return entries;
}

std::vector<fs::path> entriesOf(const fs::path& folder, std::string_view prefix) {
  std::vector<fs::path> entries = entriesOf(folder);
  const auto isOther = [prefix](const fs::path& entry) {
    return entry.filename().string().substr(0, prefix.size()) != prefix;
  };
  entries.erase(std::remove_if(entries.begin(), entries.end(), isOther), entries.end());
  return entries;
}

bool isServer(const fs::path& process) {
  std::string name = textOf(process / "comm");
  if (!name.empty() && name.back() == '\n') name.pop_back();
  return std::find(std::begin(kServers), std::end(kServers), name) != std::end(kServers);
}

void addOpenFiles(const fs::path& process, std::set<int>& cards) {
  for (const fs::path& link : entriesOf(process / "fd")) {
    std::error_code error;
    const fs::path target = fs::read_symlink(link, error);
    if (error) continue;
    if (const auto card = cardOfDeviceFile(target.string())) cards.insert(*card);
  }
}

/// The kernel names the thread that opened the PCM; its process has the server's name.
bool ownedByServer(const fs::path& proc, const fs::path& substream) {
  const auto thread = numberAfter(textOf(substream / "status"), "owner_pid");
  if (!thread) return false;
  const auto process = numberAfter(textOf(proc / std::to_string(*thread) / "status"), "Tgid");
  return process && isServer(proc / std::to_string(*process));
}

bool streamsForServer(const fs::path& proc, const fs::path& card) {
  for (const fs::path& pcm : entriesOf(card, "pcm")) {
    for (const fs::path& substream : entriesOf(pcm, "sub")) {
      if (ownedByServer(proc, substream)) return true;
    }
  }
  return false;
}

}  // namespace

std::optional<int> cardOfDeviceFile(std::string_view path) noexcept {
  for (const std::string_view prefix : {"/dev/snd/pcmC", "/dev/snd/controlC"}) {
    if (path.substr(0, prefix.size()) == prefix) return leadingNumber(path.substr(prefix.size()));
  }
  return std::nullopt;
}

std::set<int> cardsOfSoundServers(const fs::path& proc) {
  std::set<int> cards;
  for (const fs::path& process : entriesOf(proc)) {
    if (leadingNumber(process.filename().string()) && isServer(process)) addOpenFiles(process, cards);
  }
  for (const fs::path& card : entriesOf(proc / "asound", "card")) {
    const auto index = leadingNumber(card.filename().string().substr(4));
    if (index && streamsForServer(proc, card)) cards.insert(*index);
  }
  return cards;
}

std::optional<PcmInUse> parsePcmInUse(std::string_view text) {
  const auto channels = numberAfter(text, "channels");
  const auto rate = numberAfter(text, "rate");
  const auto period = numberAfter(text, "period_size");
  if (!channels || !rate || !period) return std::nullopt;
  return PcmInUse{static_cast<unsigned>(*channels), static_cast<unsigned>(*rate),
                  static_cast<unsigned>(*period)};
}

std::optional<PcmInUse> pcmInUse(int card, std::string_view pcm, const fs::path& proc) {
  const fs::path folder = proc / "asound" / ("card" + std::to_string(card)) / pcm;
  for (const fs::path& substream : entriesOf(folder, "sub")) {
    if (const auto inUse = parsePcmInUse(textOf(substream / "hw_params"))) return inUse;
  }
  return std::nullopt;
}

}  // namespace tolvane::hal::alsa
