#pragma once

#include "common/Descriptor.h"
#include "common/Record.h"
#include "common/SystemRoot.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace icloud {

/// The daemon cannot be reached, has ended, or refuses.
class BirdFailure : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// A connection to the daemon that carries one request and its answers.
class BirdLink {
public:
  /// Connects and sends the request. Throws BirdFailure.
  BirdLink(const SystemRoot& root, std::initializer_list<std::string_view> request);

  int descriptor() const { return socket_.get(); }

  /// The next record that has arrived already. Throws BirdFailure when it is a refusal.
  std::optional<Record> received();

  /// Waits for bytes and reads them. False when the daemon has closed the connection.
  bool receive();

  /// Waits for the next record. Throws BirdFailure when the connection ends first.
  Record await();

private:
  Descriptor socket_;
  RecordReader reader_;
};

} // namespace icloud
