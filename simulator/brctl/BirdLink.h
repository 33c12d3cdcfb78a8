#pragma once

#include "common/Descriptor.h"
#include "common/Record.h"
#include "common/SystemRoot.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace icloud {

/// The daemon cannot be reached, has gone, or refuses.
class BirdFailure : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// A connection to the daemon that carries one request and its answers.
class BirdLink {
public:
  /// Connects and asks. Throws BirdFailure.
  BirdLink(const SystemRoot& root, std::initializer_list<std::string_view> request);

  int descriptor() const { return socket_.get(); }

  /// The next record when one was received already.
  std::optional<Record> received();

  /// Waits for bytes and takes them in. False when the daemon has ended the connection.
  bool receive();

  /// The next record, waiting for it. Throws BirdFailure when none comes any more.
  Record await();

private:
  Descriptor socket_;
  RecordReader reader_;
};

} // namespace icloud
