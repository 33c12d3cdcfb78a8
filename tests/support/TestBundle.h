#pragma once

#include "ports/Bundle.h"

#include <map>
#include <string>
#include <utility>

namespace driftmark::test {

/// A bundle as the test describes it; at first it is in the Applications folder and has an
/// identifier alone.
class TestBundle final : public Bundle {
public:
  std::string path() const override { return path_; }
  std::optional<std::string> identifier() const override { return identifier_; }

  std::optional<std::string> information(const std::string& key) const override {
    const auto found = information_.find(key);
    return found == information_.end() ? std::nullopt : std::optional(found->second);
  }

  void setPath(std::string path) { path_ = std::move(path); }
  void setIdentifier(std::optional<std::string> identifier) { identifier_ = std::move(identifier); }
  void setVersion(std::string version) {
    information_["CFBundleShortVersionString"] = std::move(version);
  }

  /// Makes this a program outside a bundle.
  void forgetInformation() {
    identifier_.reset();
    information_.clear();
  }

private:
  std::string path_ = "/Applications/Driftmark.app";
  std::optional<std::string> identifier_ = "com.example.driftmark";
  std::map<std::string, std::string> information_;
};

} // namespace driftmark::test
