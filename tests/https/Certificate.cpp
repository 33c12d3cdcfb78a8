// How the server gets its certificate.

#include "https/Certificate.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

/// Runs a program to its end and discards its messages. Throws std::runtime_error when it fails.
void run(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  const int error =
      posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0)
    throw std::runtime_error(words[0] + ": " + std::strerror(error));
  int status = 0;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  if (status != 0)
    throw std::runtime_error(words[0] + " has failed");
}

} // namespace

Certificate Certificate::make(const std::string& folder, const std::string& hostName) {
  const Certificate made{.certificateFile = folder + "/certificate.pem",
                         .keyFile = folder + "/key.pem"};
  run({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
       "-nodes", "-days", "30", "-subj", "/CN=" + hostName, "-addext",
       "subjectAltName=DNS:" + hostName, "-keyout", made.keyFile, "-out", made.certificateFile});
  return made;
}

} // namespace driftmark::test
