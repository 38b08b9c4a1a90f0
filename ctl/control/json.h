// Commands, answers and events as JSON texts, one to one with the OSC messages of the same names. No sockets,
// no state. docs/control.schema.json describes every text.
//
// Channels are counted from 1 in the texts. A level in decibels is a number, or null for silence.
//
//   {"command":"route/gain","id":7,"input":1,"output":3,"db":-6}
//   {"answer":"route/gain","id":7,"ok":true,"serial":12}
//   {"answer":"route/gain","id":8,"ok":false,"error":"there is no route from input 1 to output 3"}
//   {"event":"changed","serial":12,"cause":"edit","routes":[{"input":1,...}],"removed":[]}
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/result.h"
#include "ctl/control/answer.h"
#include "ctl/control/command.h"

namespace tolvane::ctl::control {

/// Larger texts are refused.
inline constexpr std::size_t kLargestMessageBytes = std::size_t{64} << 10U;

/// The sender's name for a command, which the answer repeats.
using RequestId = std::variant<std::monostate, std::int64_t, std::string>;

/// A command as it came.
struct Request {
  Command command;
  RequestId id;               // none: the answer has no id either
  std::uint64_t gesture = 0;  // not 0: one undo step with the sender's other changes of the same gesture
  bool operator==(const Request&) const = default;
};

/// A request that cannot be executed. The sender gets encodeAnswer(error).
struct RequestError {
  std::string text;
  std::string command;  // its name, if it was understood
  RequestId id;         // likewise
};

/// Some requests that came in one text: a single one, or an array, which is one publication and one undo
/// step. Each of the array is answered for itself, also the wrong ones.
using RequestBundle = std::vector<Result<Request, RequestError>>;

/// Reads the text of a request or of an array of 1 to 256 requests. Error: more than kLargestMessageBytes,
/// not UTF-8 JSON, nested deeper than 8, or neither an object nor an array. A wrong object is an error of its
/// own place in the bundle: an unknown command, a member that is missing, unknown or of the wrong type, a
/// number out of range. Throws nothing but std::bad_alloc. [any-thread]
[[nodiscard]] Result<RequestBundle, RequestError> decodeRequests(std::string_view text);

/// The text of a request, for clients. [any-thread]
[[nodiscard]] std::string encodeRequest(const Request& request);

/// The text of an answer. Names that are not UTF-8 get U+FFFD. [any-thread]
[[nodiscard]] std::string encodeAnswer(const Command& command, const RequestId& id, const Answer& answer);
[[nodiscard]] std::string encodeAnswer(const RequestError& error);

/// The text of an event. [any-thread]
[[nodiscard]] std::string encodeEvent(const Event& event);

/// What a door says first, to whoever connects: the program, and whether the token must be said before
/// anything else. [any-thread]
[[nodiscard]] std::string encodeWelcome(const std::string& program, bool needsToken);

}  // namespace tolvane::ctl::control
