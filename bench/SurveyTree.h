#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace driftmark::bench {

/// Folders full of downloaded cloud files, in a temporary folder that is removed with this object.
class SurveyTree {
public:
  static constexpr std::size_t folders = 10'000;
  static constexpr std::size_t filesInFolder = 20;
  static constexpr std::size_t files = folders * filesInFolder;

  /// Throws std::system_error where files cannot be made or take no attributes.
  SurveyTree();
  SurveyTree(const SurveyTree&) = delete;
  SurveyTree& operator=(const SurveyTree&) = delete;
  ~SurveyTree();

  const std::filesystem::path& path() const { return path_; }

private:
  void fill() const;

  std::filesystem::path path_;
};

} // namespace driftmark::bench
