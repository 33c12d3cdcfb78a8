// What the demo prints, and which files it writes.

#include "demo/Reporter.h"

#include "common/SystemFailure.h"

#include <array>
#include <cstdio>
#include <sstream>

#include <unistd.h>

namespace icloud {
namespace {

std::ofstream newFile(const std::filesystem::path& path) {
  std::ofstream file(path, std::ios::trunc);
  if (!file)
    throwSystemFailure("cannot write " + path.string());
  return file;
}

} // namespace

Reporter::Reporter(const std::optional<std::filesystem::path>& folder)
    : isTerminal_(isatty(STDOUT_FILENO) == 1) {
  if (!folder)
    return;
  std::filesystem::create_directories(*folder);
  logFile_ = newFile(*folder / "log.txt");
  transcriptFile_ = newFile(*folder / "transcript.txt");
  summaryFile_ = newFile(*folder / "summary.txt");
  menusFile_ = newFile(*folder / "menus.txt");
}

std::string Reporter::time() const {
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin_;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%6.1f s", elapsed.count());
  return text.data();
}

void Reporter::print(const std::string& text, Style style) {
  if (isTerminal_ && style == Style::dim)
    std::printf("\x1b[2m%s\x1b[0m\n", text.c_str());
  else
    std::printf("%s\n", text.c_str());
  std::fflush(stdout);
  transcriptFile_ << text << std::endl;
}

void Reporter::message(const std::string& text) {
  print(text, Style::normal);
}

void Reporter::event(const std::string& text) {
  print(time() + "  ☁ " + text, Style::dim);
}

void Reporter::log(const std::string& line) {
  logLines_.push_back(line);
  logTimes_.push_back(time());
  logFile_ << line << std::endl;
  print(logTimes_.back() + "    " + line, Style::normal);
}

void Reporter::user(const std::string& text) {
  print(time() + "  ☞ " + text, Style::dim);
}

void Reporter::menu(const std::string& text) {
  menusFile_ << time() << "\n\n" << text << std::endl;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    print("              " + line, Style::dim);
}

void Reporter::summary(const std::string& text) {
  summaryFile_ << text << std::flush;
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

} // namespace icloud
