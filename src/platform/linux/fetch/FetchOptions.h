#pragma once

#include <optional>
#include <string>
#include <vector>

namespace driftmark {

/// The command line of the program that fetches.
struct FetchOptions {
  std::string url;
  int timeout = 60'000; ///< in milliseconds, without a byte from the server
  bool reload = false;  ///< asks caches for the server's version
  bool help = false;

  static constexpr const char* usage =
      "usage: driftmark-fetch [--reload] [--timeout MILLISECONDS] URL\n"
      "\n"
      "Writes what is behind the https URL to standard output. Exit status 0: all of it.\n"
      "Else the reason is on standard error.\n"
      "\n"
      "  --reload                asks caches for the server's version\n"
      "  --timeout MILLISECONDS  gives up after so long without a byte (60000)\n"
      "\n"
      "DRIFTMARK_EXTRA_CA_CERTIFICATES may name a PEM file with CA certificates to trust\n"
      "beside those of the system.\n";

  /// Returns no value for wrong arguments.
  static std::optional<FetchOptions> from(const std::vector<std::string>& arguments);
};

} // namespace driftmark
