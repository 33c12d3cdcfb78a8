#include "uidriver/Connection.h"

#include "common/SystemFailure.h"
#include "process/Launch.h"

#include <array>
#include <chrono>
#include <stdexcept>

#include <sys/socket.h>

namespace icloud {
namespace {

using Json = nlohmann::json;

constexpr std::chrono::seconds patience{30};

} // namespace

UiDriver::Connection::Connection(Descriptor socket) : socket_(std::move(socket)) {
  const Json hello = next();
  process_ = hello.at("process").get<pid_t>();
  program_ = hello.at("program").get<std::string>();
}

Json UiDriver::Connection::ask(Json request) {
  request["request"] = ++lastRequest_;
  const std::string line = request.dump() + '\n';
  for (std::size_t sent = 0; sent < line.size();) {
    const ssize_t count = send(socket_.get(), line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
    if (count < 0)
      throwSystemFailure("the program does not listen");
    sent += static_cast<std::size_t>(count);
  }
  Json reply = next();
  while (!reply.contains("reply"))
    reply = next();
  if (reply.contains("error"))
    throw std::runtime_error(reply["error"].get<std::string>());
  return reply;
}

void UiDriver::Connection::awaitNotice() {
  next();
}

void UiDriver::Connection::awaitEnd() {
  while (readSome())
    received_.clear();
}

Json UiDriver::Connection::next() {
  std::size_t end = received_.find('\n');
  for (; end == std::string::npos; end = received_.find('\n'))
    if (!readSome())
      throw std::runtime_error("the program is gone");
  const Json message = Json::parse(received_.substr(0, end));
  received_.erase(0, end + 1);
  return message;
}

bool UiDriver::Connection::readSome() {
  if (!isReadableWithin(socket_.get(), patience))
    throw std::runtime_error("waited in vain for the program");
  std::array<char, 65536> bytes;
  const ssize_t count = read(socket_.get(), bytes.data(), bytes.size());
  if (count > 0)
    received_.append(bytes.data(), static_cast<std::size_t>(count));
  return count > 0; // a killed program's end of the socket may end in an error
}

} // namespace icloud
