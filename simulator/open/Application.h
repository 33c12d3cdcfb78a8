#pragma once

#include <filesystem>
#include <stdexcept>

namespace icloud {

/// Why a path cannot be opened, in words for a user.
class OpenFailure : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Starts the application of a bundle in a session of its own, with the environment of this process
/// and "/" as its working folder. Returns as soon as it runs. Its output is appended to the file
/// `log`. `shown` names the bundle in messages. Throws OpenFailure.
void startApplication(const std::filesystem::path& bundle, const std::string& shown,
                      const std::filesystem::path& log);

} // namespace icloud
