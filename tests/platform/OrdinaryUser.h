#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>

#include <unistd.h>

namespace driftmark::test {

/// As long as this object lives, this process acts as a user without root's rights. Does nothing
/// unless the tests run as root.
class OrdinaryUser {
public:
  /// Makes that user the owner of these folders.
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
