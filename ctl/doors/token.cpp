#include "ctl/doors/token.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ctl/terminal/printable.h"

namespace tolvane::ctl {

namespace {

constexpr std::size_t kMostBytes = 1024;

Failure usage(const std::string& path, const std::string& text) {
  return {about(path, text), ExitStatus::usage};
}

Result<Token, Failure> readFrom(int descriptor, const std::string& path) {
  struct stat file {};
  if (::fstat(descriptor, &file) != 0) return Failure{systemFailure(path, errno).text, ExitStatus::usage};
  if (!S_ISREG(file.st_mode)) return usage(path, "is not a regular file");
  if ((file.st_mode & 077U) != 0)
    return usage(path, "a token file must be its owner's alone; make it so with chmod 600");
  char bytes[kMostBytes + 2];
  const ssize_t count = ::read(descriptor, bytes, sizeof bytes);
  if (count < 0) return Failure{systemFailure(path, errno).text, ExitStatus::usage};
  std::string secret(bytes, static_cast<std::size_t>(count));
  secret.resize(std::min(secret.size(), secret.find('\n')));
  if (!secret.empty() && secret.back() == '\r') secret.pop_back();
  if (secret.size() < Token::kFewestBytes || secret.size() > kMostBytes)
    return usage(path, "the token, which is the first line, must have 16 to 1024 bytes");
  return Token(std::move(secret));
}

}  // namespace

Result<Token, Failure> Token::read(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) return Failure{systemFailure(printable(path), errno).text, ExitStatus::usage};
  auto token = readFrom(descriptor, path);
  ::close(descriptor);
  return token;
}

bool Token::matches(std::string_view text) const noexcept {
  // Every byte of the text is compared, whatever the others were. A volatile sum keeps the compiler from
  // leaving the loop early.
  volatile unsigned difference = text.size() == secret_.size() ? 0U : 1U;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto a = static_cast<unsigned char>(text[i]);
    const auto b = static_cast<unsigned char>(secret_[i % secret_.size()]);
    difference = difference | static_cast<unsigned>(a ^ b);
  }
  return difference == 0;
}

}  // namespace tolvane::ctl
