// Which command lines `xattr` accepts.
#include "xattr/XattrCommand.h"

#include "common/UsageError.h"

namespace icloud {
namespace {

Command::Kind kindOf(char letter) {
  switch (letter) {
  case 'd':
    return Command::Kind::remove;
  case 'p':
    return Command::Kind::print;
  case 'w':
    return Command::Kind::write;
  default:
    throw UsageError(std::string("option -") + letter + " not recognized");
  }
}

void note(Command& command, const std::string& options) {
  for (const char letter : options.substr(1)) {
    if (letter == 'r')
      command.recursive = true;
    else if (letter == 'l')
      command.withValues = true;
    else if (command.kind != Command::Kind::list)
      throw UsageError("only one of -p, -w and -d");
    else
      command.kind = kindOf(letter);
  }
}

std::string takeFirst(std::vector<std::string>& texts, const char* what) {
  if (texts.empty())
    throw UsageError(std::string(what) + " is needed");
  std::string first = std::move(texts.front());
  texts.erase(texts.begin());
  return first;
}

} // namespace

const char* Command::usage() {
  return "usage: xattr [-r] [-l] PATH...            lists attributes, with -l and their values\n"
         "       xattr [-r] -p NAME PATH...         prints a value\n"
         "       xattr [-r] -w NAME VALUE PATH...   sets one\n"
         "       xattr [-r] -d NAME PATH...         removes one\n";
}

Command Command::from(const std::vector<std::string>& arguments) {
  Command command;
  auto& left = command.paths = arguments;
  while (!left.empty() && left.front().size() > 1 && left.front().front() == '-')
    note(command, takeFirst(left, "an option"));
  if (command.kind != Kind::list)
    command.name = takeFirst(left, "an attribute's name");
  if (command.kind == Kind::write)
    command.value = takeFirst(left, "a value");
  if (left.empty())
    throw UsageError("a path is needed");
  return command;
}

} // namespace icloud
