// How a test gets a display of its own.

#include "desktop/Display.h"

#include "harness/Waiting.h"

namespace driftmark::test {

namespace {

icloud::Launch server(const Channel& output) {
  // Without -noreset the server starts over when its last program disconnects, and drops the
  // programs that connect at that moment.
  icloud::Launch launch{
      "/usr/bin/Xvfb",
      {"-displayfd", "1", "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-noreset"},
      {}};
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
    server_.end(maxWait);
}

} // namespace driftmark::test
