#include "TestBundle.h"

#include "harness/TemporaryFolder.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <vector>

namespace icloud::test {

using driftmark::test::contentsOf;
namespace fs = std::filesystem;

void writeFile(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

void makeBundle(const fs::path& place, const std::string& script) {
  const fs::path contents = place / "Contents";
  fs::create_directories(contents / "MacOS");
  fs::create_directories(contents / "Resources");
  writeFile(contents / "Info.plist", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                     "<plist version=\"1.0\"><dict>\n"
                                     "<key>LSUIElement</key><true/>\n"
                                     "<key>CFBundleIdentifier</key><string>test.greeter</string>\n"
                                     "<key>CFBundleExecutable</key><string>Greeter</string>\n"
                                     "</dict></plist>\n");
  const fs::path program = contents / "MacOS/Greeter";
  writeFile(program, "#!/bin/sh\n" + script);
  fs::permissions(program, fs::perms(0755));
  writeFile(contents / "Resources/Été.txt", "summer\n");
  fs::create_symlink("Été.txt", contents / "Resources/current");
}

std::string described(const fs::path& tree) {
  std::vector<fs::path> paths{tree};
  for (const auto& entry : fs::recursive_directory_iterator(tree))
    paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::ostringstream text;
  for (const fs::path& path : paths) {
    const auto status = fs::symlink_status(path);
    text << path.lexically_relative(tree).string() << " ";
    if (fs::is_symlink(status))
      text << "-> " << fs::read_symlink(path).string();
    else
      text << std::oct << static_cast<unsigned>(status.permissions());
    if (fs::is_regular_file(status))
      text << " " << contentsOf(path);
    text << "\n";
  }
  return text.str();
}

} // namespace icloud::test
