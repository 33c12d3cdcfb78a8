// Where programs connect to their drivers.

#include "uidriver/DriverListener.h"

#include "common/LocalSocket.h"
#include "common/SystemFailure.h"
#include "process/Pipe.h"

#include <stdexcept>

#include <sys/socket.h>

namespace icloud {
namespace {

constexpr const char* socketName = "uidriver";
constexpr std::chrono::seconds connectionTimeout{30};

} // namespace

DriverListener::DriverListener(std::filesystem::path folder)
    : folder_(std::move(folder)), listener_(listenAt(folder_, socketName)) {}

DriverListener::~DriverListener() {
  std::error_code ignored;
  std::filesystem::remove(socket(), ignored);
}

std::filesystem::path DriverListener::socket() const {
  return folder_ / socketName;
}

std::map<std::string, std::optional<std::string>> DriverListener::environment() const {
  return {{"ICLOUD_UI_DRIVER", socket()},
          {"QT_PLUGIN_PATH", ICLOUD_UI_DRIVER_PLUGINS},
          {"QT_QPA_GENERIC_PLUGINS", "uidriver"}};
}

UiDriver DriverListener::awaitProgram() {
  auto driver = programWithin(connectionTimeout);
  if (!driver)
    throw std::runtime_error("timed out waiting for a program to connect");
  return std::move(*driver);
}

std::optional<UiDriver> DriverListener::programWithin(std::chrono::milliseconds timeout) {
  if (!isReadableWithin(listener_.get(), timeout))
    return std::nullopt;
  Descriptor connection(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (!connection)
    throwSystemFailure("cannot accept a program's connection");
  return UiDriver(std::move(connection));
}

} // namespace icloud
