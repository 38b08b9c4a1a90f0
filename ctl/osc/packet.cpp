#include "ctl/osc/packet.h"

#include <cstring>
#include <memory>
#include <new>

#include <arpa/inet.h>
#include <lo/lo_lowlevel.h>

namespace tolvane::ctl::osc {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kBundleHead = "#bundle\0"sv;
constexpr std::size_t kTimeTagBytes = 8;
constexpr std::string_view kAtOnce = "\0\0\0\0\0\0\0\1"sv;  // a time tag
constexpr int kDeepest = 8;
constexpr std::size_t kMostMessages = 256;
constexpr std::size_t kGoodDatagram = 1400;  // fits a frame of an Ethernet

struct MessageFree {
  void operator()(lo_message message) const noexcept { lo_message_free(message); }
};
using LoMessage = std::unique_ptr<std::remove_pointer_t<lo_message>, MessageFree>;

/// The library's pointers are to multiples of four bytes, whatever the type.
template <class Value>
Value valueAt(const void* bytes) {
  Value value{};
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

Argument argumentOf(lo_type type, const void* bytes) {
  switch (type) {
    case LO_INT32:
      return valueAt<std::int32_t>(bytes);
    case LO_INT64:
      return valueAt<std::int64_t>(bytes);
    case LO_FLOAT:
      return valueAt<float>(bytes);
    case LO_DOUBLE:
      return valueAt<double>(bytes);
    case LO_TRUE:
      return true;
    case LO_FALSE:
      return false;
    case LO_STRING:
    case LO_SYMBOL:
      return std::string(static_cast<const char*>(bytes));
    default:
      return OtherType{};
  }
}

bool decodeMessage(std::string_view bytes, Packet& packet) {
  if (packet.messages.size() >= kMostMessages) return false;
  std::string copy(bytes);  // aligned, and the library wants it writable
  const LoMessage message(lo_message_deserialise(copy.data(), copy.size(), nullptr));
  if (!message || copy.front() != '/') return false;
  Message result{copy.c_str(), {}};
  const char* const types = lo_message_get_types(message.get());
  const int count = lo_message_get_argc(message.get());
  lo_arg** const arguments = lo_message_get_argv(message.get());
  for (int i = 0; i < count; ++i)
    result.arguments.push_back(argumentOf(static_cast<lo_type>(types[i]), arguments[i]));
  packet.messages.push_back(std::move(result));
  return true;
}

/// The first four bytes as a number.
std::uint32_t sizeAt(std::string_view bytes) {
  std::uint32_t size = 0;
  std::memcpy(&size, bytes.data(), sizeof size);
  return ntohl(size);
}

bool decodeElement(std::string_view bytes, Packet& packet, int depth) {
  if (!bytes.starts_with(kBundleHead)) return !bytes.empty() && decodeMessage(bytes, packet);
  if (depth > kDeepest || bytes.size() < kBundleHead.size() + kTimeTagBytes) return false;
  bytes.remove_prefix(kBundleHead.size() + kTimeTagBytes);
  while (!bytes.empty()) {
    if (bytes.size() < sizeof(std::uint32_t)) return false;
    const std::uint32_t size = sizeAt(bytes);
    bytes.remove_prefix(sizeof size);
    if (size % 4 != 0 || size > bytes.size()) return false;
    if (!decodeElement(bytes.substr(0, size), packet, depth + 1)) return false;
    bytes.remove_prefix(size);
  }
  return true;
}

struct Add {
  lo_message message;
  void operator()(OtherType /*other*/) const { lo_message_add_nil(message); }
  void operator()(std::int32_t value) const { lo_message_add_int32(message, value); }
  void operator()(std::int64_t value) const { lo_message_add_int64(message, value); }
  void operator()(float value) const { lo_message_add_float(message, value); }
  void operator()(double value) const { lo_message_add_double(message, value); }
  void operator()(bool value) const { value ? lo_message_add_true(message) : lo_message_add_false(message); }
  void operator()(const std::string& value) const { lo_message_add_string(message, value.c_str()); }
};

std::string encodeMessage(const Message& message) {
  const LoMessage target(lo_message_new());
  if (!target) throw std::bad_alloc();
  for (const Argument& argument : message.arguments) std::visit(Add{target.get()}, argument);
  std::string bytes(lo_message_length(target.get(), message.address.c_str()), '\0');
  lo_message_serialise(target.get(), message.address.c_str(), bytes.data(), nullptr);
  return bytes;
}

void appendElement(std::string& bundle, const std::string& message) {
  const std::uint32_t size = htonl(static_cast<std::uint32_t>(message.size()));
  bundle.append(reinterpret_cast<const char*>(&size), sizeof size);
  bundle += message;
}

}  // namespace

Result<Packet, std::string> decodePacket(std::string_view datagram) {
  Packet packet;
  packet.isBundle = datagram.starts_with(kBundleHead);
  if (decodeElement(datagram, packet, 1)) return packet;
  return std::string(packet.isBundle ? "this is no whole bundle of OSC messages with type tags"
                                     : "this is no OSC message with type tags");
}

std::vector<std::string> encodePackets(const std::vector<Message>& messages) {
  std::vector<std::string> packets;
  std::vector<std::string> waiting;
  std::size_t size = 0;
  const auto flush = [&] {
    if (waiting.empty()) return;
    std::string packet = waiting.size() == 1 ? waiting.front() : std::string(kBundleHead).append(kAtOnce);
    if (waiting.size() > 1) {
      for (const std::string& message : waiting) appendElement(packet, message);
    }
    packets.push_back(std::move(packet));
    waiting.clear();
    size = 0;
  };
  for (const Message& message : messages) {
    std::string bytes = encodeMessage(message);
    if (size + bytes.size() > kGoodDatagram) flush();
    size += bytes.size() + sizeof(std::uint32_t);
    waiting.push_back(std::move(bytes));
  }
  flush();
  return packets;
}

}  // namespace tolvane::ctl::osc
