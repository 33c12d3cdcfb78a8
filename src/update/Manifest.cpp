// Which documents are an update manifest.

#include "update/Manifest.h"

#include "ports/SystemText.h"

#include <nlohmann/json.hpp>

namespace driftmark {

namespace {

using nlohmann::json;

/// The text of a required key; absent when the document does not have it.
std::optional<std::string> requiredText(const json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string())
    return std::nullopt;
  return found->get<std::string>();
}

} // namespace

std::optional<Manifest> decodeManifest(std::string_view document, const SystemText& text) {
  // The library takes a zero byte for the end of the document.
  if (document.find('\0') != std::string_view::npos)
    return std::nullopt;
  const json object = json::parse(document, nullptr, /*allow_exceptions=*/false);
  if (!object.is_object())
    return std::nullopt;
  auto version = requiredText(object, "version");
  auto url = requiredText(object, "url");
  if (!version || !url || !text.isUrl(*url))
    return std::nullopt;

  Manifest manifest{*std::move(version), *std::move(url), std::nullopt};
  if (const auto notes = object.find("notes"); notes != object.end() && !notes->is_null()) {
    if (!notes->is_string())
      return std::nullopt;
    manifest.notes = notes->get<std::string>();
  }
  return manifest;
}

} // namespace driftmark
