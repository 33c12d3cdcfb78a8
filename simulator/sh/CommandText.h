#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace icloud {

/// Maps the absolute name of a command to what is run instead.
using Renaming = std::function<std::string(const std::string& name)>;

/// Renames every command in a shell text whose name is an absolute path without quotes. Quoted
/// text, arguments and comments stay unchanged. A new name is put in quotes.
std::string withCommandsRenamed(std::string_view text, const Renaming& renamed);

/// Quotes `text` as one word of a shell, whatever it contains.
std::string shellQuoted(std::string_view text);

} // namespace icloud
