// Where the build puts what the tests run.

#include "harness/BuiltFiles.h"

namespace driftmark::test {

std::string driftmarkProgram() {
  return DRIFTMARK_PROGRAM;
}

std::string driftmarkBundle() {
  return UPDATE_BUNDLE;
}

std::string simulatedTools() {
  return ICLOUD_TOOLS;
}

std::string childToolPath() {
  return CHILD_TOOL;
}

std::string execChildTool(const std::string& steps) {
  return "exec " + childToolPath() + " " + steps;
}

std::string desktopSubject() {
  return DESKTOP_SUBJECT;
}

std::string holdFoldersLibrary() {
  return HOLD_FOLDERS;
}

std::string limitThreadsLibrary() {
  return LIMIT_THREADS;
}

std::string uiDriverSubject() {
  return UI_DRIVER_SUBJECT;
}

std::string demoProgram() {
  return ICLOUD_DEMO;
}

std::string fetchProgram() {
  return FETCH_PROGRAM;
}

std::string replayProgram() {
  return REPLAY_PROGRAM;
}

std::string sourceFile(const std::string& path) {
  return std::string(SOURCE_FOLDER "/") + path;
}

} // namespace driftmark::test
