#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>

#include <unistd.h>

namespace driftmark::test {

/// Where the tests run as root, whom no permission stops, makes this process act as another user as
/// long as it lives.
class OrdinaryUser {
public:
  /// These folders come to belong to that user.
  explicit OrdinaryUser(std::initializer_list<std::string> folders) {
    if (geteuid() != 0)
      return;
    isOther_ = std::all_of(folders.begin(), folders.end(), [](const std::string& folder) {
      return chown(folder.c_str(), number, number) == 0;
    });
    isOther_ = isOther_ && setegid(number) == 0 && seteuid(number) == 0;
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;
  ~OrdinaryUser() {
    if (isOther_ && seteuid(0) == 0)
      isOther_ = setegid(0) != 0;
  }

private:
  static constexpr unsigned number = 65534;

  bool isOther_ = false;
};

} // namespace driftmark::test
