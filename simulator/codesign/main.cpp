// How `codesign` signs, verifies and displays, and the words it uses.
#include "bundle/InfoPlist.h"
#include "codesign/BundleContents.h"
#include "codesign/CodesignCommand.h"
#include "codesign/Signature.h"
#include "common/SystemRoot.h"
#include "common/UsageError.h"

#include <cstdio>
#include <cstdlib>

namespace {

using namespace icloud;
namespace fs = std::filesystem;

constexpr int badUsage = 2;
constexpr const char* notSigned = "code object is not signed at all";
constexpr const char* signatureBroken = "a sealed resource is missing or invalid";

/// A bundle, and its path as the user wrote it.
struct Subject {
  std::string shown;
  fs::path bundle;
};

/// Prints a message about a path.
void say(const std::string& about, const std::string& text) {
  std::fprintf(stderr, "%s: %s\n", about.c_str(), text.c_str());
}

void show(const char* name, const std::string& value) {
  std::fprintf(stderr, "%s=%s\n", name, value.c_str());
}

std::string requiredText(const fs::path& bundle, const char* key) {
  const auto text = infoText(bundle, key);
  if (!text || text->empty())
    throw SigningFailure("bundle format unrecognized, invalid, or unsuitable");
  return *text;
}

void requireBundle(const fs::path& path) {
  if (!fs::exists(fs::symlink_status(path)))
    throw SigningFailure("No such file or directory");
  if (!fs::is_directory(path))
    throw SigningFailure(notSigned);
  if (!fs::is_regular_file(fs::symlink_status(infoPlistOf(path))))
    throw SigningFailure("bundle format unrecognized, invalid, or unsuitable");
}

Signature requiredSignature(const fs::path& bundle) {
  auto signature = Signature::of(bundle);
  if (!signature)
    throw SigningFailure(notSigned);
  return std::move(*signature);
}

/// Throws SigningFailure with a list of what differs from the signature.
void compare(const Subject& subject, const BundleContents& expected,
             const BundleContents& present) {
  std::string differences;
  const auto note = [&](const char* what, const std::string& name) {
    differences += std::string("\n") + what + ": " + subject.shown + "/" + name;
  };
  for (const auto& [name, description] : present)
    if (const auto found = expected.find(name); found == expected.end())
      note("file added", name);
    else if (found->second != description)
      note("file modified", name);
  for (const auto& [name, description] : expected)
    if (!present.contains(name))
      note("file missing", name);
  if (!differences.empty())
    throw SigningFailure(signatureBroken + differences);
}

void verify(const Subject& subject, const Command& command) {
  const Signature signature = requiredSignature(subject.bundle);
  compare(subject, signature.contents, contentsOf(subject.bundle));
  if (command.strict)
    requireLinksInside(subject.bundle);
  if (signature.identifier != requiredText(subject.bundle, "CFBundleIdentifier"))
    throw SigningFailure(signatureBroken);
  if (command.verbosity == 0)
    return;
  say(subject.shown, "valid on disk");
  say(subject.shown, "satisfies its Designated Requirement");
}

void display(const Subject& subject, const Command& command) {
  const Signature signature = requiredSignature(subject.bundle);
  show("Executable",
       subject.shown + "/Contents/MacOS/" + requiredText(subject.bundle, "CFBundleExecutable"));
  if (command.verbosity == 0)
    return;
  show("Identifier", signature.identifier);
  show("Format", "app bundle with generic");
  if (signature.identity.isAdHoc())
    show("Signature", "adhoc");
  else if (command.verbosity > 1)
    show("Authority", signature.identity.name());
  show("TeamIdentifier", signature.identity.isAdHoc() ? "not set" : signature.identity.team());
  std::fprintf(stderr, "Sealed Resources version=2 rules=0 files=%zu\n", signature.contents.size());
}

bool hasSignature(const fs::path& bundle) {
  return fs::exists(fs::symlink_status(bundle / signaturePath));
}

void sign(const Subject& subject, const Identity& identity, bool force) {
  const bool replaces = hasSignature(subject.bundle);
  if (replaces && !force)
    throw SigningFailure("is already signed");
  const Signature signature{identity, requiredText(subject.bundle, "CFBundleIdentifier"),
                            contentsOf(subject.bundle)};
  signature.writeTo(subject.bundle);
  if (replaces)
    say(subject.shown, "replacing existing signature");
}

void operate(const Subject& subject, const Command& command, const Identity& identity) {
  requireBundle(subject.bundle);
  switch (command.kind) {
  case Command::Kind::verify:
    return verify(subject, command);
  case Command::Kind::display:
    return display(subject, command);
  case Command::Kind::sign:
    return sign(subject, identity, command.force);
  }
}

// With a trailing slash a link would be followed.
Subject subjectOf(std::string path, const SystemRoot& root) {
  while (path.size() > 1 && path.ends_with('/'))
    path.pop_back();
  const std::string shown = fs::absolute(path);
  return {shown, root.resolve(shown)};
}

int run(const Command& command) {
  const SystemRoot root = SystemRoot::ofThisProgram();
  const Identity identity(command.identity);
  int status = EXIT_SUCCESS;
  for (const std::string& path : command.paths) {
    try {
      operate(subjectOf(path, root), command, identity);
    } catch (const std::exception& problem) {
      say(path, problem.what());
      status = EXIT_FAILURE;
    }
  }
  return status;
}

} // namespace

int main(int argc, char** argv) {
  if (answersHelp(argc, argv, Command::usage()))
    return EXIT_SUCCESS;
  try {
    return run(Command::from({argv + 1, argv + argc}));
  } catch (const UsageError& error) {
    std::fprintf(stderr, "codesign: %s\n%s", error.what(), Command::usage());
    return badUsage;
  } catch (const SigningFailure& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "codesign: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
