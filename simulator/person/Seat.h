#pragma once

#include "common/Descriptor.h"
#include "person/Person.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace icloud {

/// A place before the screen: programs that start with its variables are attended from here, one
/// after the other or several at once.
class Seat {
public:
  /// Listens at a socket in `folder`. Throws std::system_error.
  explicit Seat(std::filesystem::path folder);
  ~Seat();
  Seat(const Seat&) = delete;
  Seat& operator=(const Seat&) = delete;

  std::filesystem::path socket() const;

  /// What a program's environment must say so that the person inside it comes to this seat. Passed
  /// on to what the program starts.
  std::map<std::string, std::optional<std::string>> environment() const;

  /// Waits for the next program to come up. Throws std::runtime_error when none does.
  Person awaitProgram();

  /// The next program, if one came up within `limit`.
  std::optional<Person> programWithin(std::chrono::milliseconds limit);

private:
  std::filesystem::path folder_;
  Descriptor listener_;
};

} // namespace icloud
