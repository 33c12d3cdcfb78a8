#pragma once

#include <filesystem>
#include <stdexcept>

namespace icloud {

/// Why something cannot be opened, in the words for a user.
class OpenFailure : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Starts the application of a bundle in a session of its own, with the environment of this process
/// and the root folder as its working folder, and returns as soon as it runs. What it prints is
/// appended to the file `log`. `shown` names the bundle in messages. Throws OpenFailure.
void startApplication(const std::filesystem::path& bundle, const std::string& shown,
                      const std::filesystem::path& log);

} // namespace icloud
