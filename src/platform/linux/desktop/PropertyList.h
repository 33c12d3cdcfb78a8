#pragma once

#include <map>
#include <string>

#include <QByteArray>

namespace driftmark {

/// The texts of a property list in XML: the keys of its outermost dictionary whose values are
/// strings. Empty when it is not well-formed or not a dictionary. Any thread.
std::map<std::string, std::string> propertyListTexts(const QByteArray& xml);

} // namespace driftmark
