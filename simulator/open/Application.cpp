// How an application is started, and why it cannot be.
#include "open/Application.h"

#include "bundle/InfoPlist.h"

#include <array>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

/// The files, signals and session of the new process.
class SpawnSettings {
public:
  explicit SpawnSettings(const fs::path& log) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, log.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    posix_spawn_file_actions_addchdir_np(&actions_, "/");
    restoreSignals();
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
  }

  /// 0 or an error number.
  int start(const fs::path& program) const {
    std::string name = program;
    const std::array<char*, 2> arguments{name.data(), nullptr};
    pid_t process = 0;
    return posix_spawn(&process, program.c_str(), &actions_, &attributes_, arguments.data(),
                       environ);
  }

private:
  void restoreSignals() {
    sigset_t all;
    sigset_t none;
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setflags(&attributes_,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }

  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

fs::path executableOf(const fs::path& bundle, const std::string& shown) {
  if (!fs::exists(infoPlistOf(bundle)))
    throw OpenFailure("No application knows how to open " + shown + ".");
  const auto name = infoText(bundle, "CFBundleExecutable");
  const fs::path program = bundle / "Contents/MacOS" / name.value_or("");
  if (!name || name->empty() || name->find('/') != std::string::npos || !fs::exists(program))
    throw OpenFailure("The application " + shown +
                      " cannot be opened because its executable is missing.");
  return program;
}

} // namespace

void startApplication(const fs::path& bundle, const std::string& shown, const fs::path& log) {
  const fs::path program = executableOf(bundle, shown);
  if (fs::is_directory(program) || access(program.c_str(), X_OK) != 0)
    throw OpenFailure("The application " + shown +
                      " cannot be opened because its executable cannot be run.");
  fs::create_directories(log.parent_path());
  if (const int problem = SpawnSettings(log).start(program))
    throw OpenFailure("The application " + shown + " cannot be opened: " + std::strerror(problem) +
                      ".");
}

} // namespace icloud
