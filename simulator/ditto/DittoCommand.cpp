// Which command lines `ditto` accepts.
#include "ditto/DittoCommand.h"

#include "common/UsageError.h"

#include <set>

namespace icloud {
namespace {

const std::set<std::string> longOptions{"--keepParent", "--rsrc", "--norsrc", "--sequesterRsrc",
                                        "--extattr"};
constexpr std::string_view letters = "xckVv";

void note(std::set<std::string>& options, const std::string& argument) {
  if (argument.starts_with("--")) {
    if (!longOptions.contains(argument))
      throw UsageError("unrecognized option " + argument);
    options.insert(argument);
    return;
  }
  for (const char letter : argument.substr(1)) {
    if (letters.find(letter) == std::string_view::npos)
      throw UsageError(std::string("illegal option -- ") + letter);
    options.insert(std::string(1, letter));
  }
}

Command::Kind kindOf(const std::set<std::string>& options) {
  const bool unpack = options.contains("x");
  const bool pack = options.contains("c");
  if (unpack && pack)
    throw UsageError("-c and -x exclude each other");
  if ((unpack || pack) != options.contains("k"))
    throw UsageError("only zip archives are supported: -c -k or -x -k");
  if (options.contains("--keepParent") && !pack)
    throw UsageError("--keepParent goes with -c");
  if (unpack)
    return Command::Kind::unpack;
  return pack ? Command::Kind::pack : Command::Kind::copy;
}

} // namespace

const char* Command::usage() {
  return "usage: ditto SOURCE TARGET                    copies a tree, or a file\n"
         "       ditto -c -k [--keepParent] SOURCE ARCHIVE   packs a tree into a zip archive\n"
         "       ditto -x -k ARCHIVE FOLDER             unpacks a zip archive\n";
}

Command Command::from(const std::vector<std::string>& arguments) {
  std::set<std::string> options;
  std::vector<std::string> names;
  for (const std::string& argument : arguments)
    if (argument.size() > 1 && argument.front() == '-')
      note(options, argument);
    else
      names.push_back(argument);
  const Kind kind = kindOf(options);
  if (names.size() != 2)
    throw UsageError("a source and a target are needed");
  return {kind, options.contains("--keepParent"), names[0], names[1]};
}

} // namespace icloud
