#include "person/Seat.h"

#include "common/LocalSocket.h"
#include "common/SystemFailure.h"
#include "process/Launch.h"

#include <stdexcept>

#include <sys/socket.h>

namespace icloud {
namespace {

constexpr const char* socketName = "person";
constexpr std::chrono::seconds patience{30};

} // namespace

Seat::Seat(std::filesystem::path folder)
    : folder_(std::move(folder)), listener_(listenAt(folder_, socketName)) {}

Seat::~Seat() {
  std::error_code ignored;
  std::filesystem::remove(socket(), ignored);
}

std::filesystem::path Seat::socket() const {
  return folder_ / socketName;
}

std::map<std::string, std::optional<std::string>> Seat::environment() const {
  return {{"ICLOUD_PERSON", socket()},
          {"QT_PLUGIN_PATH", ICLOUD_PERSON_PLUGINS},
          {"QT_QPA_GENERIC_PLUGINS", "person"}};
}

Person Seat::awaitProgram() {
  auto person = programWithin(patience);
  if (!person)
    throw std::runtime_error("waited in vain for a program to come up");
  return std::move(*person);
}

std::optional<Person> Seat::programWithin(std::chrono::milliseconds limit) {
  if (!isReadableWithin(listener_.get(), limit))
    return std::nullopt;
  Descriptor connection(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (!connection)
    throwSystemFailure("cannot take a program's call");
  return Person(std::move(connection));
}

} // namespace icloud
