#pragma once

#include <filesystem>
#include <string>

namespace icloud::test {

/// Makes the bundle of an application called "Greeter". Its executable is a script; it has a
/// resource and a link.
void makeBundle(const std::filesystem::path& place, const std::string& script = "exit 0\n");

void writeFile(const std::filesystem::path& path, const std::string& text);

} // namespace icloud::test
