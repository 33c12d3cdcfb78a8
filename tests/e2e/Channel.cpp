#include "Channel.h"

#include "common/SystemFailure.h"
#include "process/Pipe.h"

#include <array>
#include <cstdlib>

#include <fcntl.h>

namespace icloud::test {
namespace {

constexpr std::chrono::seconds patience{30};

} // namespace

Channel::Channel(Descriptor readingEnd, Descriptor childEnd)
    : readingEnd_(std::move(readingEnd)), childEnd_(std::move(childEnd)) {}

Channel Channel::pipe() {
  Pipe made = makePipe();
  return {std::move(made.reading), std::move(made.writing)};
}

Channel Channel::terminal() {
  Descriptor master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  std::array<char, 128> name{};
  if (!master || grantpt(master.get()) != 0 || unlockpt(master.get()) != 0 ||
      ptsname_r(master.get(), name.data(), name.size()) != 0)
    throwSystemFailure("cannot have a pseudo-terminal");
  Descriptor slave(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  return {std::move(master), std::move(slave)};
}

bool Channel::readSome() {
  if (!isReadableWithin(readingEnd_.get(), patience))
    throw std::runtime_error(
        "waited in vain after: " +
        text_.substr(text_.size() - std::min<std::size_t>(text_.size(), 2000)));
  std::array<char, 65536> bytes;
  const ssize_t count = read(readingEnd_.get(), bytes.data(), bytes.size());
  if (count > 0)
    text_.append(bytes.data(), static_cast<std::size_t>(count));
  return count > 0; // a terminal without a writer ends in an error
}

const std::string& Channel::readUntil(std::string_view text, unsigned times) {
  const auto isSeen = [&] {
    std::size_t at = text_.find(text);
    for (unsigned seen = 1; seen < times && at != std::string::npos; ++seen)
      at = text_.find(text, at + text.size());
    return at != std::string::npos;
  };
  while (!isSeen())
    if (!readSome())
      throw std::runtime_error("\"" + std::string(text) + "\" never came, only: " + text_);
  return text_;
}

const std::string& Channel::readSoFar() {
  while (isReadableWithin(readingEnd_.get(), std::chrono::milliseconds(0)) && readSome())
    continue;
  return text_;
}

const std::string& Channel::readToEnd() {
  closeChildEnd();
  while (readSome())
    continue;
  return text_;
}

} // namespace icloud::test
