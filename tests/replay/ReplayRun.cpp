#include "ReplayRun.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts)
    result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> environment(const fs::path& temporaryFolder) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry; ++entry)
    if (!std::string_view(*entry).starts_with("TMPDIR="))
      result.emplace_back(*entry);
  result.push_back("TMPDIR=" + temporaryFolder.string());
  return result;
}

} // namespace

ReplayRun::ReplayRun() {
  std::string name = fs::temp_directory_path() / "driftmark-replay-test-XXXXXX";
  if (!::mkdtemp(name.data()))
    throw std::system_error(errno, std::generic_category(), name);
  base_ = name;
  folder_ = base_ / "work";
  fs::create_directory(folder_);
  fs::create_directory(base_ / "temporary files");
}

ReplayRun::~ReplayRun() {
  std::error_code ignored;
  fs::remove_all(base_, ignored);
}

fs::path ReplayRun::write(const std::string& name, std::string_view content) const {
  std::ofstream file(folder_ / name, std::ios::binary);
  file << content;
  return folder_ / name;
}

ReplayResult ReplayRun::run(const std::vector<std::string>& arguments) const {
  const fs::path output = base_ / "output";
  const fs::path errors = base_ / "errors";
  posix_spawn_file_actions_t actions{};
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  constexpr int create = O_WRONLY | O_CREAT | O_TRUNC;
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), create, 0600);
  ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), create, 0600);
  ::posix_spawn_file_actions_addchdir_np(&actions, folder_.c_str());

  std::vector<std::string> words{REPLAY_PROGRAM};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = environment(base_ / "temporary files");
  pid_t child = 0;
  const int error = ::posix_spawn(&child, REPLAY_PROGRAM, &actions, nullptr, pointers(words).data(),
                                  pointers(variables).data());
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0)
    throw std::system_error(error, std::generic_category(), REPLAY_PROGRAM);

  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(output), contentOf(errors)};
}

std::size_t ReplayRun::temporaryFiles() const {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(base_ / "temporary files"), fs::directory_iterator()));
}

fs::path fixture(const std::string& name) {
  return fs::path(REPLAY_FIXTURES) / name;
}

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace driftmark::test
