// Which command lines `codesign` accepts.
#include "codesign/CodesignCommand.h"

#include "common/UsageError.h"

#include <optional>

namespace icloud {
namespace {

class Parsing {
public:
  explicit Parsing(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  Command result() {
    for (; index_ < arguments_.size(); ++index_)
      take(arguments_[index_]);
    // Without another operation the first -v is the operation.
    if (!kind_ && command_.verbosity > 0) {
      kind_ = Command::Kind::verify;
      --command_.verbosity;
    }
    if (!kind_)
      throw UsageError("an operation is needed");
    if (command_.paths.empty())
      throw UsageError("a path is needed");
    command_.kind = *kind_;
    return std::move(command_);
  }

private:
  void take(const std::string& argument) {
    if (argument.starts_with("--"))
      takeLong(argument);
    else if (argument.size() > 1 && argument.front() == '-')
      takeLetters(argument);
    else
      command_.paths.push_back(argument);
  }

  void takeLong(const std::string& argument) {
    if (argument == "--verify")
      operate(Command::Kind::verify);
    else if (argument == "--display")
      operate(Command::Kind::display);
    else if (argument == "--sign")
      sign();
    else if (argument == "--force")
      command_.force = true;
    else if (argument == "--strict")
      command_.strict = true;
    else if (argument == "--verbose")
      ++command_.verbosity;
    else if (argument != "--deep")
      throw UsageError("unrecognized option " + argument);
  }

  void takeLetters(const std::string& argument) {
    for (const char letter : argument.substr(1))
      if (letter == 'v')
        ++command_.verbosity;
      else if (letter == 'd')
        operate(Command::Kind::display);
      else if (letter == 'f')
        command_.force = true;
      else if (letter == 's')
        sign();
      else
        throw UsageError(std::string("invalid option -- ") + letter);
  }

  void operate(Command::Kind kind) {
    if (kind_ && *kind_ != kind)
      throw UsageError("only one operation at a time");
    kind_ = kind;
  }

  void sign() {
    operate(Command::Kind::sign);
    if (++index_ >= arguments_.size())
      throw UsageError("an identity is needed to sign with");
    command_.identity = arguments_[index_];
  }

  const std::vector<std::string>& arguments_;
  std::size_t index_ = 0;
  std::optional<Command::Kind> kind_;
  Command command_;
};

} // namespace

const char* Command::usage() {
  return "usage: codesign --verify [--deep] [--strict] [-v] PATH...   verifies a signature\n"
         "       codesign -d [-v] PATH...                             shows a signature\n"
         "       codesign -s IDENTITY [-f] PATH...                    signs; \"-\" is ad hoc\n";
}

Command Command::from(const std::vector<std::string>& arguments) {
  return Parsing(arguments).result();
}

} // namespace icloud
