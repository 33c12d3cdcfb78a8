#pragma once

#include <string>

namespace driftmark::test {

// Absolute paths of what the build makes for the tests to run, and of sources that tests read.

/// The program itself.
std::string driftmarkProgram();

/// The application bundle with the program, without debug information: tests copy it often.
std::string driftmarkBundle();

/// A system root with the tools of the simulated system.
std::string simulatedTools();

/// A tool that does what its arguments say.
std::string childToolPath();

/// `childToolPath() + " " + steps`, for a shell script whose process becomes that tool.
std::string execChildTool(const std::string& steps);

/// One adapter in a process of its own.
std::string desktopSubject();

/// A library that makes a program wait where it opens certain folders.
std::string holdFoldersLibrary();

/// A library that limits how many threads a program can start.
std::string limitThreadsLibrary();

/// A program with a bit of every control, for the tests of the UI driver.
std::string uiDriverSubject();

std::string demoProgram();

/// The program that fetches URLs for the program.
std::string fetchProgram();

std::string replayProgram();

/// A file or folder of the sources, by its path from their top.
std::string sourceFile(const std::string& path);

} // namespace driftmark::test
