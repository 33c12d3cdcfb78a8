// How tests read what a child writes.

#include "harness/Channel.h"

#include "common/SystemFailure.h"
#include "harness/Waiting.h"
#include "process/Pipe.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include <fcntl.h>

namespace driftmark::test {

using icloud::Descriptor;

namespace {

std::string inQuotes(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

} // namespace

Channel::Channel(Descriptor readingEnd, Descriptor childEnd)
    : readingEnd_(std::move(readingEnd)), childEnd_(std::move(childEnd)) {}

Channel Channel::pipe() {
  icloud::Pipe made = icloud::makePipe();
  return {std::move(made.reading), std::move(made.writing)};
}

Channel Channel::terminal() {
  Descriptor master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  std::array<char, 128> name{};
  if (!master || grantpt(master.get()) != 0 || unlockpt(master.get()) != 0 ||
      ptsname_r(master.get(), name.data(), name.size()) != 0)
    icloud::throwSystemFailure("cannot have a pseudo-terminal");
  Descriptor slave(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  return {std::move(master), std::move(slave)};
}

bool Channel::readSome(const std::string& awaited) {
  constexpr std::size_t maxQuoted = 2000;
  awaitReadable(readingEnd_.get(),
                awaited + " after " +
                    inQuotes(text_.substr(text_.size() - std::min(text_.size(), maxQuoted))));
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
    if (!readSome(inQuotes(text)))
      throw std::runtime_error("the output ended without " + inQuotes(text) + ": " +
                               inQuotes(text_));
  return text_;
}

const std::string& Channel::readSoFar() {
  while (icloud::isReadableWithin(readingEnd_.get(), std::chrono::milliseconds(0)) &&
         readSome("nothing"))
    continue;
  return text_;
}

const std::string& Channel::readToEnd() {
  closeChildEnd();
  while (readSome("the end of the output"))
    continue;
  return text_;
}

} // namespace driftmark::test
