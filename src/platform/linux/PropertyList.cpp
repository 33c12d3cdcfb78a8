#include "platform/linux/PropertyList.h"

#include <QXmlStreamReader>

namespace driftmark {

namespace {

using Texts = std::map<std::string, std::string>;

/// Reads the elements of a dictionary up to its end.
Texts readDictionary(QXmlStreamReader& reader) {
  Texts texts;
  std::string key;
  while (reader.readNextStartElement()) {
    const auto element = reader.name();
    if (element == u"key")
      key = reader.readElementText().toStdString();
    else if (element == u"string")
      texts.insert_or_assign(key, reader.readElementText().toStdString());
    else
      reader.skipCurrentElement();
  }
  return texts;
}

} // namespace

std::map<std::string, std::string> propertyListTexts(const QByteArray& xml) {
  QXmlStreamReader reader(xml);
  Texts texts;
  if (reader.readNextStartElement() && reader.name() == u"plist" && reader.readNextStartElement() &&
      reader.name() == u"dict")
    texts = readDictionary(reader);
  while (!reader.atEnd())
    reader.readNext();
  return reader.hasError() ? Texts() : texts;
}

} // namespace driftmark
