// How tests wait: with a deadline, and with the name of what does not happen.

#include "harness/Waiting.h"

#include "process/Pipe.h"

#include <fstream>

namespace driftmark::test {

namespace {

std::string nameOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

} // namespace

void awaitReadable(int descriptor, const std::string& event) {
  if (!icloud::isReadableWithin(descriptor, maxWait))
    throw TimedOut(event);
}

int awaitExit(icloud::ChildProcess& child) {
  if (!child.hasEnded())
    awaitReadable(child.exitDescriptor(), "the end of " + nameOf(child.identifier()));
  return child.wait();
}

std::string awaitEnd(icloud::ChildProcess& child) {
  return icloud::describeEnd(awaitExit(child));
}

} // namespace driftmark::test
