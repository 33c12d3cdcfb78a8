// How a JSON document is read, by the letters of its grammar.

#include "PlainJson.h"

#include "Plain.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace driftmark::fuzz::plain {

namespace {

class JsonReader {
public:
  explicit JsonReader(std::string_view document) : remaining_(document) {}

  std::optional<Json> read() {
    if (!isUtf8(remaining_))
      return std::nullopt;
    take("\xef\xbb\xbf");
    Json json;
    if (!value(json) || !remaining_.empty())
      return std::nullopt;
    return json;
  }

private:
  bool take(std::string_view literal) {
    if (!remaining_.starts_with(literal))
      return false;
    remaining_.remove_prefix(literal.size());
    return true;
  }

  void skipSpace() {
    remaining_.remove_prefix(std::min(remaining_.find_first_not_of(" \t\r\n"), remaining_.size()));
  }

  /// With the white space around it.
  bool value(Json& json) {
    skipSpace();
    const bool isRead = bareValue(json);
    skipSpace();
    return isRead;
  }

  bool bareValue(Json& json) {
    if (take("{")) {
      json.kind = Json::Kind::object;
      return list('}', [&] { return member(json); });
    }
    if (take("["))
      return list(']', [this] {
        Json ignored;
        return value(ignored);
      });
    if (remaining_.starts_with('"')) {
      json.kind = Json::Kind::text;
      return text(json.text);
    }
    if (take("null")) {
      json.kind = Json::Kind::null;
      return true;
    }
    return take("true") || take("false") || number();
  }

  /// The elements up to the `end` of an object or an array.
  template <class Element> bool list(char end, Element element) {
    const std::string_view closing(&end, 1);
    skipSpace();
    if (take(closing))
      return true;
    do {
      skipSpace();
      if (!element())
        return false;
      skipSpace();
    } while (take(","));
    return take(closing);
  }

  bool member(Json& object) {
    std::string key;
    if (!text(key))
      return false;
    skipSpace();
    Json json;
    if (!take(":") || !value(json))
      return false;
    object.members[key] = json;
    return true;
  }

  bool text(std::string& result) {
    if (!take("\""))
      return false;
    while (!remaining_.empty() && !remaining_.starts_with('"')) {
      const char c = remaining_.front();
      remaining_.remove_prefix(1);
      if (static_cast<unsigned char>(c) < 0x20 || (c == '\\' && !escaped(result)))
        return false;
      if (c != '\\')
        result += c;
    }
    return take("\"");
  }

  bool escaped(std::string& result) {
    constexpr std::string_view letters = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    if (take("u"))
      return codePoint(result);
    const std::size_t letter =
        remaining_.empty() ? std::string::npos : letters.find(remaining_.front());
    if (letter == std::string::npos)
      return false;
    remaining_.remove_prefix(1);
    result += meanings[letter];
    return true;
  }

  std::optional<std::uint32_t> hexDigits() {
    const std::string digits(remaining_.substr(0, 4));
    if (digits.size() < 4 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
      return std::nullopt;
    remaining_.remove_prefix(4);
    return static_cast<std::uint32_t>(std::stoul(digits, nullptr, 16));
  }

  bool codePoint(std::string& result) {
    auto point = hexDigits();
    if (!point || (*point >= 0xdc00 && *point < 0xe000))
      return false;
    if (*point >= 0xd800 && *point < 0xdc00) {
      const auto low = take("\\u") ? hexDigits() : std::nullopt;
      if (!low || *low < 0xdc00 || *low >= 0xe000)
        return false;
      point = 0x10000 + ((*point - 0xd800) << 10U) + (*low - 0xdc00);
    }
    const auto put = [&](std::uint32_t byte) { result += static_cast<char>(byte); };
    const auto putMore = [&](unsigned shift) { put(0x80U | (*point >> shift & 0x3fU)); };
    if (*point < 0x80) {
      put(*point);
    } else if (*point < 0x800) {
      put(0xc0U | *point >> 6U);
      putMore(0);
    } else if (*point < 0x10000) {
      put(0xe0U | *point >> 12U);
      putMore(6);
      putMore(0);
    } else {
      put(0xf0U | *point >> 18U);
      putMore(12);
      putMore(6);
      putMore(0);
    }
    return true;
  }

  std::size_t digits() {
    const std::size_t count =
        std::min(remaining_.find_first_not_of("0123456789"), remaining_.size());
    remaining_.remove_prefix(count);
    return count;
  }

  bool number() {
    const std::string_view start = remaining_;
    take("-");
    if (!take("0") && digits() == 0)
      return false;
    if (take(".") && digits() == 0)
      return false;
    if (take("e") || take("E")) {
      if (!take("+"))
        take("-");
      if (digits() == 0)
        return false;
    }
    return toDouble(std::string(start.substr(0, start.size() - remaining_.size()))).has_value();
  }

  std::string_view remaining_;
};

} // namespace

std::optional<Json> readJson(std::string_view document) {
  return JsonReader(document).read();
}

} // namespace driftmark::fuzz::plain
