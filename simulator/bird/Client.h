#pragma once

#include "bird/Feeder.h"
#include "common/Descriptor.h"
#include "common/Record.h"

#include <memory>
#include <optional>
#include <string>

#include <sys/types.h>

namespace icloud {

/// One connection to the daemon. Never blocks; buffers a bounded amount for a client that reads
/// slowly.
class Client {
public:
  explicit Client(Descriptor socket);

  int descriptor() const { return socket_.get(); }
  pid_t process() const { return process_; }

  /// Reads what has arrived. Returns the first record, which is the request. Closes the connection
  /// when the client has closed it.
  std::optional<Record> receive();

  void serve(std::unique_ptr<Feeder> feeder) { feeder_ = std::move(feeder); }
  Feeder* feeder() const { return feeder_.get(); }

  /// Sends as much as the client accepts now.
  void send();

  /// Whether bytes wait until the client accepts more.
  bool hasUnsent() const { return sent_ < out_.size(); }
  bool isClosed() const { return !socket_; }
  void close() { socket_.reset(); }

private:
  bool refill();

  Descriptor socket_;
  pid_t process_ = 0;
  RecordReader reader_;
  bool requested_ = false;
  std::unique_ptr<Feeder> feeder_;
  std::string out_;
  std::size_t sent_ = 0;
};

} // namespace icloud
