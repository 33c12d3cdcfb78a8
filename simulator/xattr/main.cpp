// How `xattr` lists, prints, writes and removes attributes.
#include "common/SystemRoot.h"
#include "common/UsageError.h"
#include "xattr/Attributes.h"
#include "xattr/XattrCommand.h"

#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <sysexits.h>

namespace {

using namespace icloud;
namespace fs = std::filesystem;

/// Applies a command to one path after the other.
class Work {
public:
  explicit Work(const Command& command) : command_(command) {}

  void onTree(const fs::path& path, const std::string& shown) {
    onItem(path, shown);
    if (!command_.recursive || !fs::is_directory(path))
      return;
    std::error_code problem;
    fs::recursive_directory_iterator entries(path, problem);
    for (const fs::recursive_directory_iterator end; !problem && entries != end;
         entries.increment(problem))
      if (!entries->is_symlink()) // the recursion stays in the tree
        onItem(entries->path(), shown + "/" + entries->path().lexically_relative(path).string());
    if (problem)
      fail("[Errno " + std::to_string(problem.value()) + "] " + problem.message() + ": '" + shown +
           "'");
  }

  int exitStatus() const { return failed_ ? EXIT_FAILURE : EXIT_SUCCESS; }

private:
  void onItem(const fs::path& path, const std::string& shown) {
    try {
      apply(Attributes(path), shown);
    } catch (const std::system_error& error) {
      fail("[Errno " + std::to_string(error.code().value()) + "] " + error.code().message() +
           ": '" + shown + "'");
    }
  }

  void apply(const Attributes& attributes, const std::string& shown) {
    switch (command_.kind) {
    case Command::Kind::list:
      return list(attributes, shown);
    case Command::Kind::print:
      return print(attributes, shown);
    case Command::Kind::write:
      return attributes.set(command_.name, command_.value);
    case Command::Kind::remove:
      if (!attributes.remove(command_.name))
        missing(shown);
    }
  }

  void list(const Attributes& attributes, const std::string& shown) const {
    const bool manyPaths = command_.recursive || command_.paths.size() > 1;
    const std::string prefix = manyPaths ? shown + ": " : "";
    for (const std::string& name : attributes.names())
      if (command_.withValues)
        std::printf("%s%s: %s\n", prefix.c_str(), name.c_str(),
                    attributes.value(name).value_or("").c_str());
      else
        std::printf("%s%s\n", prefix.c_str(), name.c_str());
  }

  void print(const Attributes& attributes, const std::string& shown) {
    if (const auto value = attributes.value(command_.name))
      std::printf("%s\n", value->c_str());
    else
      missing(shown);
  }

  // With -r not every item needs to have it.
  void missing(const std::string& shown) {
    if (!command_.recursive)
      fail(shown + ": No such xattr: " + command_.name);
  }

  void fail(const std::string& text) {
    std::fprintf(stderr, "xattr: %s\n", text.c_str());
    failed_ = true;
  }

  const Command& command_;
  bool failed_ = false;
};

int run(const Command& command, const SystemRoot& root) {
  Work work(command);
  for (const std::string& path : command.paths)
    work.onTree(root.resolve(path), path);
  return work.exitStatus();
}

} // namespace

int main(int argc, char** argv) {
  if (answersHelp(argc, argv, Command::usage()))
    return EXIT_SUCCESS;
  try {
    return run(Command::from({argv + 1, argv + argc}), SystemRoot::ofThisProgram());
  } catch (const UsageError& error) {
    std::fprintf(stderr, "xattr: %s\n%s", error.what(), Command::usage());
    return EX_USAGE;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "xattr: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
