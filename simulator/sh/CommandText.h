#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace icloud {

/// What is to be run for a command's absolute name.
using Renaming = std::function<std::string(const std::string& name)>;

/// A shell's command text in which every command whose name is written as an absolute path, without
/// quotes, is renamed. Quoted text, arguments and comments stay as they are. What `renamed` gives
/// is put in quotes, unless it is the name itself.
std::string withCommandsRenamed(std::string_view text, const Renaming& renamed);

/// A word that a shell takes as `text`, whatever is in it.
std::string shellQuoted(std::string_view text);

} // namespace icloud
