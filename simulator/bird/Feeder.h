#pragma once

#include <cstddef>
#include <string>

namespace icloud {

/// Has records for one client, made only as fast as the client takes them.
class Feeder {
public:
  virtual ~Feeder() = default;

  /// Appends records to `out` until it holds at least `enough` bytes or none are left for now.
  virtual void fill(std::string& out, std::size_t enough) = 0;

  /// Whether the client is to be left when all that was made is sent.
  virtual bool endsWhenEmpty() const = 0;
};

} // namespace icloud
