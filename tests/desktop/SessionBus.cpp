// How a test gets a message bus of its own.

#include "desktop/SessionBus.h"

#include "harness/Waiting.h"

#include <fstream>
#include <stdexcept>

#include <fcntl.h>

namespace driftmark::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* accessibilityService = "/usr/share/dbus-1/services/org.a11y.Bus.service";

fs::path writeConfiguration(const fs::path& folder) {
  const fs::path services = folder / "services";
  fs::create_directory(services);
  fs::copy(accessibilityService, services);
  const fs::path file = folder / "bus.conf";
  std::ofstream(file) << "<busconfig>\n"
                         "  <type>session</type>\n"
                         "  <listen>unix:dir="
                      << folder.string()
                      << "</listen>\n"
                         "  <servicedir>"
                      << services.string()
                      << "</servicedir>\n"
                         "  <policy context=\"default\">\n"
                         "    <allow send_destination=\"*\"/>\n"
                         "    <allow receive_sender=\"*\"/>\n"
                         "    <allow own=\"*\"/>\n"
                         "  </policy>\n"
                         "</busconfig>\n";
  return file;
}

icloud::Launch daemon(const fs::path& folder, SessionBus::Variables variables,
                      const Channel& output, int null) {
  // Services do not write the user's settings.
  variables["GSETTINGS_BACKEND"] = "memory";
  icloud::Launch launch{
      "/usr/bin/dbus-daemon",
      {"--config-file=" + writeConfiguration(folder).string(), "--nofork", "--print-address=1"},
      std::move(variables)};
  launch.output = output.childEnd();
  launch.error = null; // its warnings and those of its services
  return launch;
}

} // namespace

SessionBus::SessionBus(const fs::path& folder, Variables variables)
    : null_(open("/dev/null", O_WRONLY | O_CLOEXEC)),
      daemon_(daemon(folder, std::move(variables), output_, null_.get())), connection_(QString()) {
  output_.closeChildEnd();
  const std::string& line = output_.readUntil("\n");
  address_ = line.substr(0, line.find('\n'));
  connection_ = QDBusConnection::connectToBus(QString::fromStdString(address_),
                                              QString::fromStdString(address_));
  if (!connection_.isConnected())
    throw std::runtime_error("the bus at " + address_ + " does not answer");
}

SessionBus::~SessionBus() {
  close();
  QDBusConnection::disconnectFromBus(QString::fromStdString(address_));
}

void SessionBus::close() {
  if (!daemon_.hasEnded())
    daemon_.end(maxWait);
}

} // namespace driftmark::test
