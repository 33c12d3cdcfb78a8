// How texts are read from an Info.plist.
#include "bundle/InfoPlist.h"

#include <stdexcept>

#include <QFile>
#include <QXmlStreamReader>

namespace icloud {
namespace {

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason) {
  throw std::runtime_error(file.string() + ": " + reason);
}

// The reader is at the start of the outermost dictionary.
std::optional<std::string> textFor(QXmlStreamReader& xml, const QString& wanted) {
  QString key;
  while (xml.readNextStartElement()) {
    if (xml.name() == u"key") {
      key = xml.readElementText();
    } else if (xml.name() == u"string" && key == wanted) {
      return xml.readElementText().toStdString();
    } else {
      xml.skipCurrentElement();
    }
  }
  return std::nullopt;
}

} // namespace

std::filesystem::path infoPlistOf(const std::filesystem::path& bundle) {
  return bundle / "Contents/Info.plist";
}

std::optional<std::string> infoText(const std::filesystem::path& bundle, const std::string& key) {
  const auto place = infoPlistOf(bundle);
  QFile file(QString::fromStdString(place.string()));
  if (!file.open(QIODevice::ReadOnly))
    refuse(place, file.errorString().toStdString());
  QXmlStreamReader xml(&file);
  const bool isPlist = xml.readNextStartElement() && xml.name() == u"plist" &&
                       xml.readNextStartElement() && xml.name() == u"dict";
  auto text = isPlist ? textFor(xml, QString::fromStdString(key)) : std::nullopt;
  if (!isPlist || xml.hasError())
    refuse(place, "not a property list");
  return text;
}

} // namespace icloud
