#pragma once

#include "codesign/Contents.h"

#include <filesystem>
#include <optional>
#include <string>

namespace icloud {

/// Who seals: a name such as "Developer ID Application: Tallowmere (T4N8RW2KQZ)", or "-" for nobody
/// in particular.
class Identity {
public:
  /// Throws SigningFailure when the name is that of no identity.
  explicit Identity(std::string name);

  const std::string& name() const { return name_; }
  bool isAdHoc() const { return team_.empty(); }

  /// Empty for nobody in particular.
  const std::string& team() const { return team_; }

private:
  std::string name_;
  std::string team_;
};

/// What stands in for a code signature: who sealed a bundle, and all that was in it.
struct Signature {
  Identity identity;
  std::string identifier; ///< of the bundle
  Contents contents;

  /// Reads a bundle's seal; nothing when it has none. Throws SigningFailure when it was tampered
  /// with.
  static std::optional<Signature> of(const std::filesystem::path& bundle);

  /// Puts the seal into the bundle, in place of one that is there. Throws std::runtime_error.
  void writeTo(const std::filesystem::path& bundle) const;
};

} // namespace icloud
