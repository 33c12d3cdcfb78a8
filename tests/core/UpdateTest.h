#pragma once

#include "support/TestPlatform.h"
#include "update/UpdateChecker.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

using Lines = std::vector<std::string>;

/// A checker on the test platform, in version 1.0 of the program.
class UpdateTest : public testing::Test {
protected:
  UpdateTest() {
    platform.bundle.setVersion("1.0");
    checker = UpdateChecker::make(platform.platform());
  }

  /// A manifest document of a version whose archive is at `archiveURL`.
  static std::string manifest(const std::string& version, const std::string& more = {}) {
    return R"({"version": ")" + version + R"(", "url": ")" + archiveURL + "\"" + more + "}";
  }

  /// Replies to the oldest pending check and lets the checker handle the reply.
  void reply(const std::string& document) {
    platform.httpClient.reply(document);
    platform.settle();
  }

  Lines takeLog() { return platform.systemLog.take(); }

  static constexpr const char* archiveURL = "https://downloads.example/Driftmark.zip";

  TestPlatform platform;
  std::shared_ptr<UpdateChecker> checker;
};

} // namespace driftmark::test
