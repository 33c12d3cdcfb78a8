// What the bundles of the tests contain.

#include "TestBundle.h"

#include <fstream>

namespace icloud::test {

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

} // namespace icloud::test
