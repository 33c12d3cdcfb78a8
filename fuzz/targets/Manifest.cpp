// The update manifest against a JSON reader of its own, and versions against their numbers.
//
// The input is a manifest and also, up to and from the first "|" on, two versions.

#include "update/Manifest.h"

#include "Plain.h"
#include "PlainJson.h"
#include "Target.h"
#include "support/TestSystemText.h"
#include "update/Version.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace driftmark::fuzz {

namespace {

std::optional<Manifest> readManifest(std::string_view document, const SystemText& system) {
  using Kind = plain::Json::Kind;
  auto json = plain::readJson(document);
  if (!json || json->kind != Kind::object)
    return std::nullopt;
  const bool hasNotes = json->members.contains("notes");
  const plain::Json& version = json->members["version"];
  const plain::Json& url = json->members["url"];
  const plain::Json& notes = json->members["notes"];
  if (version.kind != Kind::text || url.kind != Kind::text || !system.isUrl(url.text))
    return std::nullopt;
  Manifest manifest{version.text, url.text, std::nullopt};
  if (hasNotes && notes.kind == Kind::text)
    manifest.notes = notes.text;
  else if (hasNotes && notes.kind != Kind::null)
    return std::nullopt;
  return manifest;
}

std::vector<std::int64_t> numbersOf(std::string_view version) {
  std::vector<std::int64_t> numbers;
  for (const std::string& piece : plain::split(version, '.'))
    if (!piece.empty())
      numbers.push_back(plain::toInt64(piece).value_or(0));
  return numbers;
}

bool isGreater(std::string_view one, std::string_view other) {
  const auto ones = numbersOf(one);
  const auto others = numbersOf(other);
  for (std::size_t i = 0; i < std::max(ones.size(), others.size()); ++i) {
    const std::int64_t a = i < ones.size() ? ones[i] : 0;
    const std::int64_t b = i < others.size() ? others[i] : 0;
    if (a != b)
      return a > b;
  }
  return false;
}

} // namespace

void check(std::string_view input) {
  const test::TestSystemText system;
  require(decodeManifest(input, system) == readManifest(input, system), "the manifest differs");

  const std::size_t bar = std::min(input.find('|'), input.size());
  const std::string_view one = input.substr(0, bar);
  const std::string_view other = input.substr(std::min(bar + 1, input.size()));
  require(isNewer(one, other) == isGreater(one, other), "the order of versions differs");
  require(isNewer(other, one) == isGreater(other, one), "the order of versions differs");
}

} // namespace driftmark::fuzz
