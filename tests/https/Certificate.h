#pragma once

#include <string>

namespace driftmark::test {

/// A self-signed certificate and its key, as PEM files.
struct Certificate {
  std::string certificateFile;
  std::string keyFile;

  /// Makes both in `folder` with the `openssl` command, for this host name. Throws
  /// std::runtime_error when that fails.
  static Certificate make(const std::string& folder, const std::string& hostName);
};

} // namespace driftmark::test
