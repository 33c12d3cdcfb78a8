#include "platform/linux/desktop/PropertyList.h"

#include <utility>

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
    if (element == u"key") {
      key = reader.readElementText().toStdString();
      continue;
    }
    if (element != u"string")
      reader.skipCurrentElement();
    else if (std::string text = reader.readElementText().toStdString(); !key.empty())
      texts.insert_or_assign(key, std::move(text));
    key.clear();
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
