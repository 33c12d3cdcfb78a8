#include "desktop/Display.h"

namespace driftmark::test {

namespace {

constexpr std::chrono::seconds patience{10};

icloud::Launch server(const Channel& output) {
  icloud::Launch launch{
      "/usr/bin/Xvfb", {"-displayfd", "1", "-screen", "0", "1024x768x24", "-nolisten", "tcp"}, {}};
  launch.output = output.childEnd();
  return launch;
}

} // namespace

Display::Display() : server_(server(output_)) {
  output_.closeChildEnd();
  const std::string& number = output_.readUntil("\n");
  name_ = ":" + number.substr(0, number.find('\n'));
}

Display::~Display() {
  close();
}

void Display::close() {
  if (!server_.hasEnded())
    server_.end(patience);
}

} // namespace driftmark::test
