// How a folder becomes a machine, and how a program starts in it.

#include "demo/Sandbox.h"

#include "common/SystemFailure.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

namespace icloud {
namespace fs = std::filesystem;

namespace {

constexpr const char* vendor = "Developer ID Application: Tallowmere (T4N8RW2KQZ)";

/// Two pixels per point, as on a high-resolution display.
constexpr const char* screenInMemory = R"({"screens": [{"name": "screen", "x": 0, "y": 0,
  "width": 800, "height": 600, "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 2}]})";

/// No server listens at this URL.
constexpr const char* settings = R"({"UpdateManifestURL": "https://127.0.0.1:1/appcast.json"})";

fs::path newFolder() {
  std::string pattern = fs::canonical(fs::temp_directory_path()) / "icloud-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr)
    throwSystemFailure("cannot make " + pattern);
  return pattern;
}

void write(const fs::path& file, const char* text) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file);
  stream << text << '\n' << std::flush;
  if (!stream)
    throw std::runtime_error("cannot write " + file.string());
}

// The display's key lies in the user's home, and the program gets another home.
void useDisplay(Launch& launch) {
  const char* const home = std::getenv("HOME");
  if (std::getenv("XAUTHORITY") == nullptr && home != nullptr)
    launch.environment["XAUTHORITY"] = fs::path(home) / ".Xauthority";
}

// Without a session bus, the program cannot reveal files on the desktop of whoever runs this.
void useScreenInMemory(Launch& launch, const fs::path& folder) {
  const fs::path file = folder / "screen.json";
  write(file, screenInMemory);
  launch.environment["QT_QPA_PLATFORM"] = "offscreen:configfile=" + file.string();
  launch.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + (folder / "no bus").string();
}

} // namespace

Sandbox::Sandbox(const fs::path& tools) : folder_(newFolder()) {
  try {
    fs::create_directory(home());
    fs::create_directory(temporary());
    fs::copy(tools, root().path(), fs::copy_options::recursive);
    fs::create_directories(root().applications());
  } catch (...) {
    fs::remove_all(folder_);
    throw;
  }
}

Sandbox::~Sandbox() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

Launch Sandbox::programLaunch(const fs::path& program, Screen screen,
                              const std::optional<std::string>& stallAfter) const {
  write(home() / ".config/driftmark/settings.json", settings);
  Launch launch{installedProgram(program),
                {},
                {{"HOME", home()},
                 {"TMPDIR", temporary()},
                 {"DRIFTMARK_SYSTEM_ROOT", root().path()},
                 {"DRIFTMARK_STALL_SECS", stallAfter},
                 {"XDG_CONFIG_HOME", std::nullopt},
                 {"XDG_DATA_HOME", std::nullopt},
                 {"XDG_CACHE_HOME", std::nullopt}}};
  if (screen == Screen::display)
    useDisplay(launch);
  else
    useScreenInMemory(launch, folder_);
  return launch;
}

fs::path Sandbox::installedProgram(const fs::path& program) const {
  const fs::path folder = program.parent_path();
  const fs::path bundle = folder.parent_path().parent_path();
  if (!folder.string().ends_with("/Contents/MacOS") || bundle.extension() != ".app")
    return program;
  return install(bundle) / "Contents/MacOS" / program.filename();
}

fs::path Sandbox::install(const fs::path& bundle) const {
  const fs::path installed = root().applications() / bundle.filename();
  fs::copy(bundle, installed, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  ChildProcess codesign({root().codesign(), {"--force", "--sign", vendor, installed}, {}});
  if (const int status = codesign.wait(); status != 0)
    throw std::runtime_error("cannot sign " + installed.string() + ": codesign ended with " +
                             describeEnd(status));
  return installed;
}

// xdg-open appends to this pipe instead of a log file. Opening it for writing, too, keeps it from
// reaching an end.
Descriptor Sandbox::openedFiles() const {
  const fs::path pipe = root().logFolder() / "xdg-open.log";
  fs::create_directories(pipe.parent_path());
  if (mkfifo(pipe.c_str(), 0600) != 0)
    throwSystemFailure("cannot make " + pipe.string());
  Descriptor lines(open(pipe.c_str(), O_RDWR | O_CLOEXEC));
  if (!lines)
    throwSystemFailure("cannot open " + pipe.string());
  return lines;
}

} // namespace icloud
