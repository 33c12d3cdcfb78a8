// What a monitor prints, and when it ends.
#include "brctl/Monitor.h"

#include <array>

#include <poll.h>

namespace icloud {

Monitor::Monitor(BirdLink& bird, TextOutput& output)
    : bird_(bird), output_(output), style_(output.isTerminal()) {}

void Monitor::showItems(const std::string& container) {
  output_.line("observing " + style_.bold(container) + " with scopes (documents, data)");
  output_.line("");
  output_.line(style_.dim("gathering"));
  follow();
}

void Monitor::showProgress() {
  output_.line(style_.bold("observing the progress of all containers"));
  output_.line("");
  follow();
}

void Monitor::follow() {
  while (true) {
    while (const auto record = bird_.received())
      show(*record);
    waitForBird();
    if (!bird_.receive()) {
      output_.flush();
      throw BirdFailure("the connection to bird was lost");
    }
  }
}

void Monitor::show(const Record& record) {
  const std::string& kind = record.at(0);
  if (kind == "item") {
    output_.line(itemLine(record, style_));
  } else if (kind == "progress") {
    for (const std::string& line : progressLines(record, style_))
      output_.line(line);
  } else if (kind == "listed") {
    output_.line("");
    output_.line(style_.dim("gathered " + record.at(1) + " items, watching for changes"));
    output_.line("");
  } else if (kind == "text") {
    output_.raw(record.at(1));
  }
}

// Also ends when the reader closes the terminal or pipe while nothing is written.
void Monitor::waitForBird() {
  std::array<pollfd, 2> waits{{{bird_.descriptor(), POLLIN, 0}, {output_.descriptor(), 0, 0}}};
  while (waits[0].revents == 0) {
    poll(waits.data(), waits.size(), -1);
    if ((waits[1].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0)
      throw OutputClosed{};
  }
}

} // namespace icloud
