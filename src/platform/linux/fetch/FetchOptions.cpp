// How the command line of the program that fetches is read.

#include "FetchOptions.h"

#include <charconv>

namespace driftmark {
namespace {

std::optional<int> positiveNumber(const std::string& text) {
  int number = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = parsed.ec == std::errc{} && parsed.ptr == text.data() + text.size();
  return isNumber && number > 0 ? std::optional(number) : std::nullopt;
}

} // namespace

std::optional<FetchOptions> FetchOptions::from(const std::vector<std::string>& arguments) {
  FetchOptions options;
  bool hasUrl = false;
  bool optionsEnded = false;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string& argument = arguments[index];
    if (!optionsEnded && argument == "--") {
      optionsEnded = true;
    } else if (!optionsEnded && argument == "--help") {
      options.help = true;
    } else if (!optionsEnded && argument == "--reload") {
      options.reload = true;
    } else if (!optionsEnded && argument == "--timeout" && index + 1 < arguments.size()) {
      const auto timeout = positiveNumber(arguments[++index]);
      if (!timeout)
        return std::nullopt;
      options.timeout = *timeout;
    } else if (hasUrl || (!optionsEnded && argument.starts_with("--"))) {
      return std::nullopt;
    } else {
      options.url = argument;
      hasUrl = true;
    }
  }
  return hasUrl || options.help ? std::optional(options) : std::nullopt;
}

} // namespace driftmark
