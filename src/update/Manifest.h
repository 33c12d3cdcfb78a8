#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace driftmark {

class SystemText;

/// The update manifest: the vendor's description of the latest release.
struct Manifest {
  std::string version; ///< dotted
  std::string url;     ///< of a zip archive that holds the application bundle
  std::optional<std::string> notes;

  bool operator==(const Manifest&) const = default;
};

/// The largest manifest that is accepted, in bytes. Far more than a manifest needs, and the limit
/// of what a hostile server can make this program hold.
inline constexpr std::size_t maxManifestSize = 1 << 20;

/// Reads a manifest document. Absent when it is not one.
std::optional<Manifest> decodeManifest(std::string_view document, const SystemText& text);

} // namespace driftmark
