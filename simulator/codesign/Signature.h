#pragma once

#include "codesign/BundleContents.h"

#include <filesystem>
#include <optional>
#include <string>

namespace icloud {

/// Who signs: a name such as "Developer ID Application: Tallowmere (T4N8RW2KQZ)", or "-" for an
/// ad-hoc signature.
class Identity {
public:
  /// Throws SigningFailure when no identity has this name.
  explicit Identity(std::string name);

  const std::string& name() const { return name_; }
  bool isAdHoc() const { return team_.empty(); }

  /// Empty for an ad-hoc signature.
  const std::string& team() const { return team_; }

private:
  std::string name_;
  std::string team_;
};

/// The stand-in for a code signature: who signed a bundle, and what was in it.
struct Signature {
  Identity identity;
  std::string identifier; ///< of the bundle
  BundleContents contents;

  /// Reads a bundle's signature; nothing when there is none. Throws SigningFailure when it was
  /// modified.
  static std::optional<Signature> of(const std::filesystem::path& bundle);

  /// Writes the signature into the bundle and replaces an earlier one. Throws
  /// std::runtime_error.
  void writeTo(const std::filesystem::path& bundle) const;
};

} // namespace icloud
