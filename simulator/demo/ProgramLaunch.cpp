#include "demo/ProgramLaunch.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

namespace icloud {
namespace fs = std::filesystem;

namespace {

/// Twice as many pixels as points, as on a good display.
constexpr const char* screen = R"({"screens": [{"name": "screen", "x": 0, "y": 0,
  "width": 800, "height": 600, "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 2}]})";

/// Nobody serves updates here.
constexpr const char* settings = R"({"UpdateManifestURL": "https://127.0.0.1:1/appcast.json"})";

void write(const fs::path& file, const char* text) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file);
  stream << text << '\n' << std::flush;
  if (!stream)
    throw std::runtime_error("cannot write " + file.string());
}

fs::path installedProgram(const fs::path& program, const Sandbox& sandbox) {
  const fs::path folder = program.parent_path();
  const fs::path bundle = folder.parent_path().parent_path();
  if (!folder.string().ends_with("/Contents/MacOS") || bundle.extension() != ".app")
    return program;
  return sandbox.install(bundle) / "Contents/MacOS" / program.filename();
}

/// The program has another home, where the display's key is not.
void showOnDisplay(Launch& launch) {
  const char* const home = std::getenv("HOME");
  if (std::getenv("XAUTHORITY") == nullptr && home != nullptr)
    launch.environment["XAUTHORITY"] = fs::path(home) / ".Xauthority";
}

void showInMemory(Launch& launch, const Sandbox& sandbox) {
  const fs::path file = sandbox.folder() / "screen.json";
  write(file, screen);
  launch.environment["QT_QPA_PLATFORM"] = "offscreen:configfile=" + file.string();
  // What is revealed is not to be shown on somebody's desktop either.
  launch.environment["DBUS_SESSION_BUS_ADDRESS"] =
      "unix:path=" + (sandbox.folder() / "no bus").string();
}

} // namespace

Launch programLaunch(const DemoOptions& options, const Scenario& scenario, const Sandbox& sandbox) {
  write(sandbox.home() / ".config/driftmark/settings.json", settings);
  Launch launch{installedProgram(options.program, sandbox),
                {},
                {{"HOME", sandbox.home()},
                 {"TMPDIR", sandbox.temporary()},
                 {"DRIFTMARK_SYSTEM_ROOT", sandbox.root().path()},
                 {"DRIFTMARK_STALL_SECS", scenario.stallAfter},
                 {"XDG_CONFIG_HOME", std::nullopt},
                 {"XDG_DATA_HOME", std::nullopt},
                 {"XDG_CACHE_HOME", std::nullopt}}};
  if (options.interactive)
    showOnDisplay(launch);
  else
    showInMemory(launch, sandbox);
  return launch;
}

} // namespace icloud
