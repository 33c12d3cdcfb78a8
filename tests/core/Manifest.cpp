// Which documents are a manifest.

#include "update/Manifest.h"

#include "support/TestSystemText.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

std::optional<Manifest> decode(const std::string& document) {
  return decodeManifest(document, TestSystemText());
}

const std::string url = "https://downloads.example/Driftmark-1.5.zip";

TEST(ManifestTest, versionAndUrlAreEnough) {
  EXPECT_EQ(decode(R"({"version": "1.5", "url": ")" + url + "\"}"),
            (Manifest{"1.5", url, std::nullopt}));
}

TEST(ManifestTest, notesAreRead) {
  EXPECT_EQ(decode(R"({"notes": "Fewer wake-ups.", "url": ")" + url + R"(", "version": "1.5"})"),
            (Manifest{"1.5", url, "Fewer wake-ups."}));
  EXPECT_EQ(decode(R"({"version": "", "notes": "", "url": ")" + url + "\"}"),
            (Manifest{"", url, ""}));
}

TEST(ManifestTest, notesMayBeNull) {
  EXPECT_EQ(decode(R"({"version": "1.5", "notes": null, "url": ")" + url + "\"}"),
            (Manifest{"1.5", url, std::nullopt}));
}

TEST(ManifestTest, otherKeysAreIgnored) {
  EXPECT_EQ(
      decode(R"({"version": "1.5", "Version": 2, "size": 17, "more": {"url": [1, {}]}, "url": ")" +
             url + "\"}"),
      (Manifest{"1.5", url, std::nullopt}));
}

TEST(ManifestTest, textsMayContainAnyCharacter) {
  EXPECT_EQ(decode(R"({"version": "1.5", "notes": "1\n2 \u2601 \"\ud83d\udcc4\"", "url": ")" + url +
                   "\"}"),
            (Manifest{"1.5", url, "1\n2 \u2601 \"\U0001f4c4\""}));
}

TEST(ManifestTest, otherDocumentsAreRefused) {
  for (const std::string& document : {
           std::string(),
           std::string("<html><body>404 Not Found</body></html>"),
           std::string("null"),
           std::string("\"1.5\""),
           "[{\"version\": \"1.5\", \"url\": \"" + url + "\"}]",
           "{\"version\": \"1.5\", \"url\": \"" + url + "\"",
           "{\"version\": \"1.5\", \"url\": \"" + url + "\"} and more",
           "{\"version\": \"1.5\", \"url\": \"" + url + "\", \"notes\": \"\xff\"}",
           std::string("{}"),
           std::string(R"({"version": "1.5"})"),
           std::string(R"({"version": "1.5", "url": null})"),
           std::string(R"({"version": "1.5", "url": 17})"),
           std::string(R"({"version": "1.5", "url": ""})"),
           std::string(R"({"version": "1.5", "url": "https://down loads.example/a.zip"})"),
           "{\"url\": \"" + url + "\"}",
           "{\"version\": 1.5, \"url\": \"" + url + "\"}",
           "{\"version\": null, \"url\": \"" + url + "\"}",
           "{\"version\": [\"1.5\"], \"url\": \"" + url + "\"}",
           "{\"version\": \"1.5\", \"url\": \"" + url + "\", \"notes\": 17}",
           "{\"version\": \"1.5\", \"url\": \"" + url + "\", \"notes\": [\"x\"]}",
       })
    EXPECT_FALSE(decode(document)) << document;
}

TEST(ManifestTest, documentDoesNotEndAtAZeroByte) {
  const std::string document = "{\"version\": \"1.5\", \"url\": \"" + url + "\"}";
  ASSERT_TRUE(decode(document));
  for (const std::string& more : {std::string(1, '\0'), std::string("\0 and more", 10)})
    EXPECT_FALSE(decode(document + more)) << more.size() << " bytes behind the object";
}

TEST(ManifestTest, deepNestingIsRefused) {
  const std::size_t depth = maxManifestSize / 2;
  EXPECT_FALSE(decode(std::string(depth, '[')));
  EXPECT_FALSE(decode(std::string(depth, '[') + std::string(depth, ']')));
}

} // namespace
} // namespace driftmark::test
