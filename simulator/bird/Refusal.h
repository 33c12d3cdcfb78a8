#pragma once

#include <stdexcept>

namespace icloud {

/// What a client asks for cannot be done; says why in words for that client.
class Refusal : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;

  static constexpr const char* noSuchFile = "no such file";
  static constexpr const char* notInDrive = "not in iCloud Drive";
  static constexpr const char* isFolder = "is a folder";
  static constexpr const char* stillUploading = "still uploading";
  static constexpr const char* stillDownloading = "still downloading";
  static constexpr const char* inUse = "in use by another program";
};

} // namespace icloud
