#pragma once

#include <filesystem>
#include <string>

namespace icloud::test {

/// Makes the bundle of an application called "Greeter", with a script as its executable, a resource
/// and a link.
void makeBundle(const std::filesystem::path& place, const std::string& script = "exit 0\n");

void writeFile(const std::filesystem::path& path, const std::string& text);

/// A text that differs when anything in a tree differs: names, kinds, contents, modes, link
/// targets.
std::string described(const std::filesystem::path& tree);

} // namespace icloud::test
