#pragma once

#include "ports/Bundle.h"

#include <map>
#include <string>

#include <QByteArray>

namespace driftmark {

/// The texts of a property list in XML: the keys of its outermost dictionary whose values are
/// strings. Empty when the XML is not well-formed or not a dictionary. Any thread.
std::map<std::string, std::string> propertyListTexts(const QByteArray& xml);

/// The bundle NAME.app whose executable is in `NAME.app/Contents/MacOS/`. Its property list, in
/// XML, is `NAME.app/Contents/Info.plist`; one that cannot be read counts as having no keys.
class LinuxBundle final : public Bundle {
public:
  /// The bundle of this process. The path of a bundle in the applications folder of the system root
  /// is the one inside that root.
  static LinuxBundle ofThisProcess(const std::string& systemRoot);

  /// The absolute path of this process's executable.
  static std::string executableOfThisProcess();

  /// The bundle of the executable at this absolute path.
  LinuxBundle(const std::string& executable, const std::string& systemRoot);

  std::string path() const override { return path_; }
  std::optional<std::string> identifier() const override;
  std::optional<std::string> information(const std::string& key) const override;

private:
  std::string path_;
  std::map<std::string, std::string> information_;
};

} // namespace driftmark
