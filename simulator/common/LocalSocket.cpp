// How local sockets work in folders with long paths.
#include "common/LocalSocket.h"

#include "common/SystemFailure.h"

#include <cstring>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace icloud {
namespace {

Descriptor openFolder(const std::filesystem::path& folder) {
  Descriptor opened(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!opened)
    throwSystemFailure("cannot open " + folder.string());
  return opened;
}

// A socket address holds about a hundred bytes, so the folder is named by its descriptor.
sockaddr_un addressIn(const Descriptor& folder, const char* name) {
  const std::string path = "/proc/self/fd/" + std::to_string(folder.get()) + "/" + name;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path)
    throwSystemFailure(path, ENAMETOOLONG);
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

Descriptor newSocket(int flags) {
  Descriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
  if (!made)
    throwSystemFailure("cannot create a socket");
  return made;
}

const sockaddr* generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

} // namespace

Descriptor listenAt(const std::filesystem::path& folder, const char* name) {
  const Descriptor opened = openFolder(folder);
  const sockaddr_un address = addressIn(opened, name);
  Descriptor listener = newSocket(SOCK_NONBLOCK);
  unlinkat(opened.get(), name, 0);
  if (bind(listener.get(), generic(address), sizeof address) != 0)
    throwSystemFailure("cannot create " + (folder / name).string());
  if (listen(listener.get(), SOMAXCONN) != 0)
    throwSystemFailure("cannot listen at " + (folder / name).string());
  return listener;
}

Descriptor connectTo(const std::filesystem::path& folder, const char* name) {
  const Descriptor opened = openFolder(folder);
  const sockaddr_un address = addressIn(opened, name);
  Descriptor connected = newSocket(0);
  if (connect(connected.get(), generic(address), sizeof address) != 0)
    throwSystemFailure("cannot connect to " + (folder / name).string());
  return connected;
}

} // namespace icloud
