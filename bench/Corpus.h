#pragma once

#include <cstddef>
#include <string>

namespace driftmark::bench {

/// Invented output of the per-item monitor.
struct Corpus {
  std::string bytes;
  std::size_t lines = 0;
  std::size_t paths = 0;     ///< distinct paths of the state lines
  std::size_t pathBytes = 0; ///< the sum of their lengths, as printed
  std::size_t folders = 0;   ///< number of folders that hold those paths
};

/// A first listing with activity in between: of `lines` lines, 70 % are state lines of distinct
/// paths listed folder by folder, 20 % progress lines over 200 active paths, 10 % noise and colour
/// codes. CR LF; 12 of the noise lines are not UTF-8.
Corpus makeCorpus(std::size_t lines);

/// State lines of `paths` distinct paths and nothing else, each ended by `lineEnd`.
Corpus makeListing(std::size_t paths, const std::string& lineEnd);

/// The lines of `corpus` in another order.
std::string shuffled(const Corpus& corpus);

} // namespace driftmark::bench
