#include "support/message_distortion.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include <unistd.h>

#include "hal/pipewire/pipewire_headers.h"

namespace tolvane::test {

namespace {

constexpr std::size_t kPodHeader = 8;  // size and type

std::uint32_t wordAt(const std::vector<char>& message, std::size_t offset) {
  std::uint32_t word = 0;
  std::memcpy(&word, message.data() + offset, sizeof word);
  return word;
}

void setWord(std::vector<char>& message, std::size_t offset, std::uint32_t word) {
  std::memcpy(message.data() + offset, &word, sizeof word);
}

MessageHeader headerOf(const std::vector<char>& message) {
  MessageHeader header;
  std::memcpy(&header, message.data(), sizeof header);
  return header;
}

void setHeader(std::vector<char>& message, const MessageHeader& header) {
  std::memcpy(message.data(), &header, sizeof header);
}

/// States the body's size as it is now.
void stateSize(std::vector<char>& message) {
  MessageHeader header = headerOf(message);
  const std::size_t body = message.size() - sizeof header;
  header.opcodeAndSize = (header.opcodeAndSize & 0xff000000U) | static_cast<std::uint32_t>(body);
  setHeader(message, header);
}

std::size_t padded(std::size_t size) {
  return (size + 7) / 8 * 8;
}

}  // namespace

void MessageDistortion::change(std::vector<char>& message, std::vector<int>& descriptors) {
  if (below(rarity_) != 0) return;
  ++changes_;
  switch (below(12)) {
    case 0:
    case 1:
      return changeNumber(message);
    case 2:
      return changeSize(message);
    case 3:
    case 4:
      return changeText(message);
    case 5:
      return lengthenText(message);
    case 6:
      return changeWord(message);
    case 7:
      return flipBits(message);
    case 8:
      return cut(message);
    case 9:
      return changeHeader(message);
    case 10:
      return changeDescriptors(message, descriptors);
    default:
      // Twice, or not at all. Descriptors can be sent only once.
      if (!descriptors.empty()) return;
      if (below(2) == 0) return message.clear();
      message.reserve(2 * message.size());
      message.insert(message.end(), message.begin(), message.end());
  }
}

/// A number at a limit, beside the original, or any.
std::uint32_t MessageDistortion::oddNumber(std::uint32_t original) {
  const std::array<std::uint32_t, 14> numbers = {0,
                                                 1,
                                                 2,
                                                 3,
                                                 7,
                                                 64,
                                                 65536,
                                                 0x7fffffffU,
                                                 0x80000000U,
                                                 0xffffffffU,
                                                 original + 1,
                                                 original - 1,
                                                 2 * original,
                                                 static_cast<std::uint32_t>(random_())};
  return numbers[below(numbers.size())];
}

/// All values of the body, those in structures too.
std::vector<MessageDistortion::Pod> MessageDistortion::podsOf(const std::vector<char>& message) {
  std::vector<Pod> found;
  struct Room {
    std::size_t at, end;
    std::vector<std::size_t> enclosing;
  };
  std::vector<Room> rooms = {{sizeof(MessageHeader), message.size(), {}}};
  while (!rooms.empty()) {
    Room room = rooms.back();
    rooms.pop_back();
    while (room.at + kPodHeader <= room.end) {
      const Pod pod{room.at, wordAt(message, room.at), wordAt(message, room.at + 4), room.enclosing};
      const std::size_t end = room.at + kPodHeader + pod.size;
      if (end > room.end) break;
      found.push_back(pod);
      if (pod.type == SPA_TYPE_Struct) {
        rooms.push_back({room.at + kPodHeader, end, room.enclosing});
        rooms.back().enclosing.push_back(room.at);
      }
      room.at = room.at + kPodHeader + padded(pod.size);
    }
  }
  return found;
}

const MessageDistortion::Pod* MessageDistortion::anyOf(const std::vector<Pod>& pods,
                                                       const std::function<bool(const Pod&)>& isWanted) {
  std::vector<const Pod*> wanted;
  for (const Pod& pod : pods) {
    if (isWanted(pod)) wanted.push_back(&pod);
  }
  return wanted.empty() ? nullptr : wanted[below(static_cast<std::uint32_t>(wanted.size()))];
}

/// Counts are numbers too.
void MessageDistortion::changeNumber(std::vector<char>& message) {
  const std::vector<Pod> pods = podsOf(message);
  const Pod* const number = anyOf(pods, [](const Pod& pod) {
    return pod.size >= sizeof(std::uint32_t) && pod.type != SPA_TYPE_String && pod.type != SPA_TYPE_Struct;
  });
  if (number == nullptr) return;
  const std::size_t at = number->offset + kPodHeader;
  setWord(message, at, oddNumber(wordAt(message, at)));
  if (number->type == SPA_TYPE_Long && below(2) == 0) setWord(message, at + 4, oddNumber(0));
}

void MessageDistortion::changeSize(std::vector<char>& message) {
  const std::vector<Pod> pods = podsOf(message);
  const Pod* const pod = anyOf(pods, [](const Pod&) { return true; });
  if (pod == nullptr) return;
  const std::size_t at = pod->offset + (below(4) == 0 ? 4 : 0);  // sometimes its type
  setWord(message, at, oddNumber(wordAt(message, at)));
}

/// Leaves its length: other characters, control characters, what is no UTF-8, no end, or digits.
void MessageDistortion::changeText(std::vector<char>& message) {
  const std::vector<Pod> pods = podsOf(message);
  const Pod* const text =
      anyOf(pods, [](const Pod& pod) { return pod.type == SPA_TYPE_String && pod.size > 1; });
  if (text == nullptr) return;
  char* const begin = message.data() + text->offset + kPodHeader;
  const std::uint32_t kind = below(5);
  for (std::uint32_t i = 0; i + 1 < text->size; ++i) {
    if (kind == 0) begin[i] = static_cast<char>(1 + below(255));
    if (kind == 1) begin[i] = static_cast<char>(1 + below(31));
    if (kind == 2 && below(4) == 0) begin[i] = static_cast<char>(0x80 + below(128));
    if (kind == 3) begin[i] = static_cast<char>('0' + below(10));
  }
  if (kind == 4) begin[text->size - 1] = 'x';
  if (kind == 3 && below(2) == 0) begin[0] = '-';
}

void MessageDistortion::lengthenText(std::vector<char>& message) {
  const std::vector<Pod> pods = podsOf(message);
  const Pod* const text =
      anyOf(pods, [](const Pod& pod) { return pod.type == SPA_TYPE_String && pod.size != 0; });
  if (text == nullptr) return;
  constexpr std::uint32_t kLengths[] = {8, 64, 1024, 65536};
  const std::uint32_t more = kLengths[below(4)];
  for (const std::size_t outer : text->enclosing) setWord(message, outer, wordAt(message, outer) + more);
  setWord(message, text->offset, text->size + more);
  const auto at = static_cast<std::ptrdiff_t>(text->offset + kPodHeader);
  message.insert(message.begin() + at, more, static_cast<char>(' ' + below(95)));
  stateSize(message);
}

void MessageDistortion::changeWord(std::vector<char>& message) {
  const auto words = static_cast<std::uint32_t>((message.size() - sizeof(MessageHeader)) / 4);
  if (words == 0) return;
  const std::size_t at = sizeof(MessageHeader) + std::size_t{4} * below(words);
  setWord(message, at, oddNumber(wordAt(message, at)));
}

void MessageDistortion::flipBits(std::vector<char>& message) {
  const auto bytes = static_cast<std::uint32_t>(message.size() - sizeof(MessageHeader));
  if (bytes == 0) return;
  for (std::uint32_t flips = 1 + below(8); flips != 0; --flips) {
    char& byte = message[sizeof(MessageHeader) + below(bytes)];
    byte = static_cast<char>(byte ^ static_cast<char>(1U << below(8)));
  }
}

/// With a header that states the shorter size, or the old one.
void MessageDistortion::cut(std::vector<char>& message) {
  const auto bytes = static_cast<std::uint32_t>(message.size() - sizeof(MessageHeader));
  message.resize(sizeof(MessageHeader) + below(bytes + 1));
  if (below(3) != 0) stateSize(message);
}

void MessageDistortion::changeHeader(std::vector<char>& message) {
  MessageHeader header = headerOf(message);
  switch (below(4)) {
    case 0:
      header.object = below(2) == 0 ? below(64) : oddNumber(header.object);
      break;
    case 1:
      header.opcodeAndSize = (header.opcodeAndSize & 0xffffffU) | (below(24) << 24U);
      break;
    case 2:
      header.opcodeAndSize =
          (header.opcodeAndSize & 0xff000000U) | (oddNumber(header.opcodeAndSize) & 0xffffffU);
      break;
    default:
      header.sequence = oddNumber(header.sequence);
  }
  setHeader(message, header);
}

/// States another number of descriptors than there are, or takes one away.
void MessageDistortion::changeDescriptors(std::vector<char>& message, std::vector<int>& descriptors) {
  MessageHeader header = headerOf(message);
  if (descriptors.empty() || below(3) == 0) {
    header.descriptors = below(2) == 0 ? below(4) : oddNumber(header.descriptors);
    return setHeader(message, header);
  }
  const std::size_t which = below(static_cast<std::uint32_t>(descriptors.size()));
  ::close(descriptors[which]);
  descriptors.erase(descriptors.begin() + static_cast<std::ptrdiff_t>(which));
  if (below(2) == 0) --header.descriptors;
  setHeader(message, header);
}

}  // namespace tolvane::test
