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

const std::string address = "https://downloads.example/Driftmark-1.5.zip";

TEST(ManifestTest, versionAndAddressAreEnough) {
  EXPECT_EQ(decode(R"({"version": "1.5", "url": ")" + address + "\"}"),
            (Manifest{"1.5", address, std::nullopt}));
}

TEST(ManifestTest, notesMayBeThere) {
  EXPECT_EQ(
      decode(R"({"notes": "Fewer wake-ups.", "url": ")" + address + R"(", "version": "1.5"})"),
      (Manifest{"1.5", address, "Fewer wake-ups."}));
  EXPECT_EQ(decode(R"({"version": "", "notes": "", "url": ")" + address + "\"}"),
            (Manifest{"", address, ""}));
}

TEST(ManifestTest, notesMayBeNull) {
  EXPECT_EQ(decode(R"({"version": "1.5", "notes": null, "url": ")" + address + "\"}"),
            (Manifest{"1.5", address, std::nullopt}));
}

TEST(ManifestTest, otherKeysAreIgnored) {
  EXPECT_EQ(
      decode(R"({"version": "1.5", "Version": 2, "size": 17, "more": {"url": [1, {}]}, "url": ")" +
             address + "\"}"),
      (Manifest{"1.5", address, std::nullopt}));
}

TEST(ManifestTest, textsMayHoldAnyCharacter) {
  EXPECT_EQ(decode(R"({"version": "1.5", "notes": "1\n2 \u2601 \"\ud83d\udcc4\"", "url": ")" +
                   address + "\"}"),
            (Manifest{"1.5", address, "1\n2 \u2601 \"\U0001f4c4\""}));
}

TEST(ManifestTest, whatIsNoManifestIsRefused) {
  for (const std::string& document : {
           std::string(),
           std::string("<html><body>404 Not Found</body></html>"),
           std::string("null"),
           std::string("\"1.5\""),
           "[{\"version\": \"1.5\", \"url\": \"" + address + "\"}]",
           "{\"version\": \"1.5\", \"url\": \"" + address + "\"",
           "{\"version\": \"1.5\", \"url\": \"" + address + "\"} and more",
           "{\"version\": \"1.5\", \"url\": \"" + address + "\", \"notes\": \"\xff\"}",
           std::string("{}"),
           std::string(R"({"version": "1.5"})"),
           std::string(R"({"version": "1.5", "url": null})"),
           std::string(R"({"version": "1.5", "url": 17})"),
           std::string(R"({"version": "1.5", "url": ""})"),
           std::string(R"({"version": "1.5", "url": "https://down loads.example/a.zip"})"),
           "{\"url\": \"" + address + "\"}",
           "{\"version\": 1.5, \"url\": \"" + address + "\"}",
           "{\"version\": null, \"url\": \"" + address + "\"}",
           "{\"version\": [\"1.5\"], \"url\": \"" + address + "\"}",
           "{\"version\": \"1.5\", \"url\": \"" + address + "\", \"notes\": 17}",
           "{\"version\": \"1.5\", \"url\": \"" + address + "\", \"notes\": [\"x\"]}",
       })
    EXPECT_FALSE(decode(document)) << document;
}

TEST(ManifestTest, deepNestingDoesNoHarm) {
  const std::size_t depth = maxManifestSize / 2;
  EXPECT_FALSE(decode(std::string(depth, '[')));
  EXPECT_FALSE(decode(std::string(depth, '[') + std::string(depth, ']')));
}

} // namespace
} // namespace driftmark::test
