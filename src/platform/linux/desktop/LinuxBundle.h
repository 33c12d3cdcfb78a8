#pragma once

#include "ports/Bundle.h"

#include <map>
#include <string>

namespace driftmark {

/// The bundle whose executable lies at `NAME.app/Contents/MacOS/` below its top, with the property
/// list, in XML, beside that folder. A property list that cannot be read counts as having no keys.
class LinuxBundle final : public Bundle {
public:
  /// The bundle of this process. A bundle in the application folder of the system root is known by
  /// the name that it has there.
  static LinuxBundle ofThisProcess(const std::string& systemRoot);

  /// The absolute path of the program that this process runs.
  static std::string executableOfThisProcess();

  /// The bundle of the program at the absolute path `executable`.
  LinuxBundle(const std::string& executable, const std::string& systemRoot);

  std::string path() const override { return path_; }
  std::optional<std::string> identifier() const override;
  std::optional<std::string> information(const std::string& key) const override;

private:
  std::string path_;
  std::map<std::string, std::string> information_;
};

} // namespace driftmark
