// Changes the messages of a PipeWire server as a lying or damaged server might.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace tolvane::test {

/// The header of each message: target object, opcode and size, sequence number, number of descriptors.
struct MessageHeader {
  std::uint32_t object = 0;
  std::uint32_t opcodeAndSize = 0;
  std::uint32_t sequence = 0;
  std::uint32_t descriptors = 0;

  [[nodiscard]] std::uint32_t opcode() const { return opcodeAndSize >> 24; }
  [[nodiscard]] std::size_t bytes() const { return sizeof(MessageHeader) + (opcodeAndSize & 0xffffffU); }
};

/// Changes some messages of one direction. The same seed and the same messages give the same changes.
class MessageDistortion {
 public:
  /// Changes about one message in `rarity`.
  MessageDistortion(std::uint64_t seed, unsigned rarity) : random_(seed), rarity_(rarity) {}

  /// Changes the message or leaves it as it is. `message` is a header and a body; what becomes of it may be
  /// empty, several messages, or none that is whole. `descriptors` are those that it carries; those that are
  /// taken away are closed.
  void change(std::vector<char>& message, std::vector<int>& descriptors);

  /// The messages that were changed so far.
  [[nodiscard]] unsigned changes() const { return changes_; }

 private:
  /// A value in a message's body. Offsets are from the start of the message.
  struct Pod {
    std::size_t offset;  // of its own header: size and type
    std::uint32_t size;  // of its value
    std::uint32_t type;
    std::vector<std::size_t> enclosing;  // the headers of the structures around it
  };

  std::uint32_t below(std::uint32_t count) { return static_cast<std::uint32_t>(random_() % count); }
  std::uint32_t oddNumber(std::uint32_t original);
  [[nodiscard]] static std::vector<Pod> podsOf(const std::vector<char>& message);
  [[nodiscard]] const Pod* anyOf(const std::vector<Pod>& pods,
                                 const std::function<bool(const Pod&)>& isWanted);

  void changeNumber(std::vector<char>& message);
  void changeSize(std::vector<char>& message);
  void changeText(std::vector<char>& message);
  void lengthenText(std::vector<char>& message);
  void changeWord(std::vector<char>& message);
  void flipBits(std::vector<char>& message);
  void cut(std::vector<char>& message);
  void changeHeader(std::vector<char>& message);
  void changeDescriptors(std::vector<char>& message, std::vector<int>& descriptors);

  std::mt19937_64 random_;
  unsigned rarity_;
  unsigned changes_ = 0;
};

}  // namespace tolvane::test
