#pragma once

#include <string>
#include <string_view>

#include "base/result.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl {

/// The secret that clients must know.
class Token {
 public:
  /// At least this many bytes, so that it cannot be guessed at the rate that the doors allow.
  static constexpr std::size_t kFewestBytes = 16;

  explicit Token(std::string secret) : secret_(std::move(secret)) {}

  /// Reads the first line of a file. Failure (usage): the file cannot be read, is no regular file, can be
  /// read or written by others than its owner, or its first line has fewer than 16 or more than 1024 bytes.
  /// [not-io]
  [[nodiscard]] static Result<Token, Failure> read(const std::string& path);

  /// The secret itself, for a client that must say it. [any-thread]
  [[nodiscard]] const std::string& secret() const noexcept { return secret_; }

  /// True if the text is the secret. The time it takes depends on the length of the text only. [any-thread]
  [[nodiscard]] bool matches(std::string_view text) const noexcept;

 private:
  std::string secret_;
};

}  // namespace tolvane::ctl
