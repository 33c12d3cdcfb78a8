#include "uidriver/DriverListener.h"

#include "common/LocalSocket.h"
#include "common/SystemFailure.h"
#include "process/Launch.h"

#include <stdexcept>

#include <sys/socket.h>

namespace icloud {
namespace {

constexpr const char* socketName = "uidriver";
constexpr std::chrono::seconds patience{30};

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
  auto driver = programWithin(patience);
  if (!driver)
    throw std::runtime_error("waited in vain for a program to come up");
  return std::move(*driver);
}

std::optional<UiDriver> DriverListener::programWithin(std::chrono::milliseconds limit) {
  if (!isReadableWithin(listener_.get(), limit))
    return std::nullopt;
  Descriptor connection(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (!connection)
    throwSystemFailure("cannot take a program's call");
  return UiDriver(std::move(connection));
}

} // namespace icloud
