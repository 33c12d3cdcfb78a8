// How a script reports the arguments of its calls to a test.

#include "desktop/Calls.h"

#include "common/SystemFailure.h"
#include "harness/Waiting.h"

#include <algorithm>
#include <array>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>

namespace driftmark::test {

Calls::Calls(std::filesystem::path pipe) : pipe_(std::move(pipe)) {
  if (mkfifo(pipe_.c_str(), S_IRUSR | S_IWUSR) != 0)
    icloud::throwSystemFailure("cannot make " + pipe_.string());
  // The test itself is a writer, so that the pipe does not end between two calls.
  reading_ = icloud::Descriptor(open(pipe_.c_str(), O_RDWR | O_CLOEXEC));
  if (!reading_)
    icloud::throwSystemFailure("cannot open " + pipe_.string());
}

std::string Calls::script() const {
  // One write by the shell itself: no child that could outlive the script. The number of arguments
  // comes first.
  return "printf '%s\\0' $# \"$@\" > '" + pipe_.string() + "'";
}

std::vector<std::string> Calls::next() {
  const auto take = [this] {
    while (text_.find('\0') == std::string::npos) {
      awaitReadable(reading_.get(), "a call through " + pipe_.filename().string());
      std::array<char, PIPE_BUF> bytes;
      const ssize_t count = read(reading_.get(), bytes.data(), bytes.size());
      text_.append(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    const std::size_t end = text_.find('\0');
    std::string word = text_.substr(0, end);
    text_.erase(0, end + 1);
    return word;
  };
  std::vector<std::string> arguments(std::stoul(take()));
  for (std::string& argument : arguments)
    argument = take();
  return arguments;
}

} // namespace driftmark::test
